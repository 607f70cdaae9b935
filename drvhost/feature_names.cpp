#include "drvhost/feature_names.h"

#include "drvhost/command_line.h"
#include "drvhost/print_schema.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace drvhost {
namespace {

constexpr size_t kMaxSuggestions = 3;
constexpr char kListHint[] = "`drvhost features` lists them all";

char Lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

std::string Lowered(std::string_view text) {
    std::string lowered(text);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), Lower);
    return lowered;
}

// Edits (insertions, deletions, substitutions) between two texts.
size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<size_t> previous(b.size() + 1), current(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) previous[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t substitution = previous[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, substitution});
        }
        std::swap(previous, current);
    }
    return previous[b.size()];
}

// Whether a name is given as a PrintTicket name (prefix:name) rather than a GPD keyword.
bool IsSchemaName(std::string_view name) { return name.find(':') != std::string_view::npos; }

std::optional<size_t> FindFeatureNamed(const PrinterDescription& description, std::string_view name) {
    for (size_t i = 0; i < description.features.size(); ++i) {
        const FeatureDescription& feature = description.features[i];
        if (feature.keyword == name || SchemaFeatureName(feature) == name) return i;
    }
    return std::nullopt;
}

std::optional<size_t> FindOptionNamed(const FeatureDescription& feature, std::string_view name) {
    for (size_t i = 0; i < feature.options.size(); ++i) {
        const OptionDescription& option = feature.options[i];
        if (option.keyword == name || SchemaOptionName(option) == name) return i;
    }
    return std::nullopt;
}

std::string Suggestions(std::string_view wrong, const std::vector<std::string>& candidates) {
    const std::vector<std::string> closest = ClosestNames(wrong, candidates);
    if (closest.empty()) return std::string(" (") + kListHint + ")";
    std::string text = " (closest: ";
    for (size_t i = 0; i < closest.size(); ++i) text += (i ? ", " : "") + closest[i];
    return text + "; " + kListHint + ")";
}

std::vector<std::string> FeatureNames(const PrinterDescription& description, bool schemaNames) {
    std::vector<std::string> names;
    for (const FeatureDescription& feature : description.features)
        names.push_back(schemaNames ? SchemaFeatureName(feature) : feature.keyword);
    return names;
}

std::vector<std::string> OptionNames(const FeatureDescription& feature, bool schemaNames) {
    std::vector<std::string> names;
    for (const OptionDescription& option : feature.options)
        names.push_back(schemaNames ? SchemaOptionName(option) : option.keyword);
    return names;
}

}  // namespace

FeatureSelection ResolveSelection(const PrinterDescription& description, std::string_view assignment) {
    const size_t equals = assignment.find('=');
    if (equals == std::string_view::npos || equals == 0 || equals + 1 == assignment.size()) {
        throw UsageError("--set takes FEATURE=OPTION, not \"" + std::string(assignment) + "\"");
    }
    const std::string_view featureName = assignment.substr(0, equals);
    const std::string_view optionName = assignment.substr(equals + 1);
    const auto feature = FindFeatureNamed(description, featureName);
    if (!feature) {
        throw UsageError("no feature \"" + std::string(featureName) + "\"" +
                         Suggestions(featureName, FeatureNames(description, IsSchemaName(featureName))));
    }
    const FeatureDescription& described = description.features[*feature];
    const auto option = FindOptionNamed(described, optionName);
    if (!option) {
        throw UsageError("feature " + std::string(featureName) + " has no option \"" + std::string(optionName) + "\"" +
                         Suggestions(optionName, OptionNames(described, IsSchemaName(optionName))));
    }
    return {*feature, *option};
}

std::vector<std::string> ClosestNames(std::string_view wrong, const std::vector<std::string>& candidates) {
    const std::string lowered = Lowered(wrong);
    const size_t tolerance = std::max<size_t>(2, lowered.size() / 3);
    std::vector<std::pair<size_t, std::string>> scored;
    for (const std::string& candidate : candidates) {
        const std::string other = Lowered(candidate);
        size_t distance = EditDistance(lowered, other);
        const bool contains =
            !lowered.empty() && (other.find(lowered) != std::string::npos || lowered.find(other) != std::string::npos);
        if (contains) distance = std::min(distance, tolerance);
        if (distance <= tolerance) scored.emplace_back(distance, candidate);
    }
    std::stable_sort(scored.begin(), scored.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> closest;
    for (const auto& [distance, name] : scored) {
        if (closest.size() == kMaxSuggestions) break;
        if (std::find(closest.begin(), closest.end(), name) == closest.end()) closest.push_back(name);
    }
    return closest;
}

std::string DescribeFeatures(const PrinterDescription& description) {
    std::string text;
    char line[160];
    for (const FeatureDescription& feature : description.features) {
        std::snprintf(line, sizeof(line), "%-36s %s%s\n", feature.keyword.c_str(), SchemaFeatureName(feature).c_str(),
                      feature.sheet == FeatureSheet::Printer ? "  (printer property)" : "");
        text += line;
        for (size_t i = 0; i < feature.options.size(); ++i) {
            const OptionDescription& option = feature.options[i];
            std::snprintf(line, sizeof(line), "  %c %-32s %s\n", i == feature.defaultOption ? '*' : ' ',
                          option.keyword.c_str(), SchemaOptionName(option).c_str());
            text += line;
        }
    }
    return text;
}

}  // namespace drvhost
