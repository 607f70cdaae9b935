// Features and options named on the command line, by the description's GPD keywords or by their
// PrintTicket names, with suggestions when a name is wrong.
#pragma once

#include "drvhost/printer_description.h"

#include <string>
#include <string_view>
#include <vector>

namespace drvhost {

struct FeatureSelection {
    size_t feature;
    size_t option;
};

// "FEATURE=OPTION", each part a GPD keyword (PaperSize=A4) or a PrintTicket name
// (psk:PageMediaSize=psk:ISOA4). Throws UsageError naming the wrong part with the closest names.
FeatureSelection ResolveSelection(const PrinterDescription& description, std::string_view assignment);

// Up to three candidates that look like `wrong` (case aside, a few letters off, or one holding the
// other), closest first.
std::vector<std::string> ClosestNames(std::string_view wrong, const std::vector<std::string>& candidates);

// The features and their options, one per line: GPD keyword, then the PrintTicket name.
std::string DescribeFeatures(const PrinterDescription& description);

}  // namespace drvhost
