// A printer's feature description, read from the subset of the GPD syntax that the simulated
// core driver understands:
//
//   *% comment
//   *Feature: Keyword
//   {
//       *Name: "Display name"
//       *DefaultOption: OptionKeyword
//       *PrintSchemaKeywordMap: "SchemaName"
//       *FeatureType: PRINTER_PROPERTY            (printer property sheet; default: document)
//       *Option: OptionKeyword
//       {
//           *Name: "Display name"
//           *PrintSchemaKeywordMap: "SchemaName"
//           *Constraints: OtherFeature.OtherOption  (may not be selected together)
//       }
//   }
//
// Other attributes, and any block that follows them, are ignored. Features keep their file order:
// the plug-in finds standard items by keyword prefix in that order.
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace drvhost {

struct OptionConstraint {
    std::string feature;
    std::string option;
};

struct OptionDescription {
    std::string keyword;
    std::wstring displayName;
    std::string schemaName;  // empty: not mapped to a Print Schema keyword
    std::vector<OptionConstraint> constraints;
};

enum class FeatureSheet { Document, Printer };

struct FeatureDescription {
    std::string keyword;
    std::wstring displayName;
    std::string schemaName;
    FeatureSheet sheet = FeatureSheet::Document;
    // *ConcealFromUI?: TRUE - the core driver keeps the feature but shows no item for it.
    bool concealed = false;
    size_t defaultOption = 0;
    std::vector<OptionDescription> options;

    std::optional<size_t> FindOption(std::string_view optionKeyword) const;
};

struct PrinterDescription {
    std::vector<FeatureDescription> features;

    std::optional<size_t> FindFeature(std::string_view featureKeyword) const;
};

// A malformed description: one message naming the file and the line.
class DescriptionError : public std::runtime_error {
public:
    DescriptionError(const std::string& file, int line, const std::string& message)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + message), m_line(line) {}
    int Line() const noexcept { return m_line; }

private:
    int m_line;
};

PrinterDescription ParsePrinterDescription(std::string_view text, const std::string& fileName);
PrinterDescription LoadPrinterDescription(const std::wstring& path);

}  // namespace drvhost
