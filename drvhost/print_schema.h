// The core driver's own Print Schema work: the base PrintTicket and PrintCapabilities that it
// builds from a DEVMODE before the plug-in adds to them, and the selections it takes from a
// PrintTicket before the plug-in reads it.
//
// Naming: a feature or option with a *PrintSchemaKeywordMap is named psk: + that keyword (a map
// that carries its own prefix, such as ns0000:DocumentPageRanges, is used as written); other
// features are ns0000:Job + keyword and other options ns0000: + keyword, made into a valid XML
// name ("_" before a leading digit, "_" for characters a name cannot hold). The device namespace
// that the plug-in's BindPrinter returns is declared under the prefix ns0000.
#pragma once

#include "drvhost/option_items.h"
#include "drvhost/printer_description.h"

#include <msxml2.h>

#include <string>
#include <utility>
#include <vector>

namespace drvhost {

inline constexpr wchar_t kFrameworkUri[] =
    L"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";
inline constexpr wchar_t kKeywordsUri[] = L"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords";
inline constexpr wchar_t kSchemaInstanceUri[] = L"http://www.w3.org/2001/XMLSchema-instance";
inline constexpr wchar_t kSchemaUri[] = L"http://www.w3.org/2001/XMLSchema";

std::string SchemaFeatureName(const FeatureDescription& feature);
std::string SchemaOptionName(const OptionDescription& option);

std::wstring BuildPrintTicket(const PrinterDescription& description, const SelectionSource& selectionOf,
                              const std::wstring& deviceNamespace);
std::wstring BuildPrintCapabilities(const PrinterDescription& description, const std::wstring& deviceNamespace);

// Lets XPath queries on the document name the framework namespace "psf", whatever prefix the
// document itself uses.
void BindFrameworkPrefix(IXMLDOMDocument2* document);

// The (feature, option) pairs that a PrintTicket selects and the host can map, in ticket order.
std::vector<std::pair<size_t, size_t>> ReadTicketSelections(IXMLDOMDocument2* ticket,
                                                            const PrinterDescription& description,
                                                            const std::wstring& deviceNamespace);

}  // namespace drvhost
