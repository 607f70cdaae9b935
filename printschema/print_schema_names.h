// The Print Schema vocabulary shared by every PrintTicket and PrintCapabilities routine of the
// plug-in: namespace URIs, element, attribute and type names, prefixes and the text templates the
// toolkit formats. Names are wide strings because the DOM works in BSTRs.
#pragma once

namespace PrintSchema {

namespace Uri {
inline constexpr wchar_t Framework[] = L"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";
inline constexpr wchar_t Keywords[] = L"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords";
inline constexpr wchar_t SchemaInstance[] = L"http://www.w3.org/2001/XMLSchema-instance";
inline constexpr wchar_t Schema[] = L"http://www.w3.org/2001/XMLSchema";
// The device namespace of the plug-in's private features, options and parameters (prefix ns0000).
// PrintTickets that users saved carry it, so it never changes.
inline constexpr wchar_t Device[] = L"http://schemas.velmora.com/printing/2026/zxtaluUI14";
}  // namespace Uri

namespace Vocabulary {
inline constexpr wchar_t Feature[] = L"Feature";
inline constexpr wchar_t Option[] = L"Option";
inline constexpr wchar_t ParameterInit[] = L"ParameterInit";
inline constexpr wchar_t ParameterRef[] = L"ParameterRef";
inline constexpr wchar_t ParameterDef[] = L"ParameterDef";
inline constexpr wchar_t ScoredProperty[] = L"ScoredProperty";
inline constexpr wchar_t Value[] = L"Value";
inline constexpr wchar_t Name[] = L"name";
inline constexpr wchar_t Property[] = L"Property";
inline constexpr wchar_t Constrained[] = L"constrained";
inline constexpr wchar_t PickOne[] = L"PickOne";
inline constexpr wchar_t SelectionType[] = L"SelectionType";
inline constexpr wchar_t DataType[] = L"DataType";
inline constexpr wchar_t DefaultValue[] = L"DefaultValue";
inline constexpr wchar_t MaxValue[] = L"MaxValue";
inline constexpr wchar_t MinValue[] = L"MinValue";
inline constexpr wchar_t MaxLength[] = L"MaxLength";
inline constexpr wchar_t MinLength[] = L"MinLength";
inline constexpr wchar_t Multiple[] = L"Multiple";
inline constexpr wchar_t Mandatory[] = L"Mandatory";
inline constexpr wchar_t UnitType[] = L"UnitType";
inline constexpr wchar_t DisplayName[] = L"psk:DisplayName";
inline constexpr wchar_t PrintTicket[] = L"PrintTicket";
inline constexpr wchar_t PrintCapabilities[] = L"PrintCapabilities";
inline constexpr wchar_t Type[] = L"type";
inline constexpr wchar_t Integer[] = L"integer";
inline constexpr wchar_t Decimal[] = L"decimal";
inline constexpr wchar_t String[] = L"string";
inline constexpr wchar_t QName[] = L"QName";
inline constexpr wchar_t Conditional[] = L"Conditional";
inline constexpr wchar_t FrameworkPrefix[] = L"psf";
inline constexpr wchar_t NamespaceDeclaration[] = L"xmlns:%s='%s'";
inline constexpr wchar_t SelectionLanguage[] = L"SelectionLanguage";
inline constexpr wchar_t XPath[] = L"XPath";
inline constexpr wchar_t RootQuery[] = L"//%s:%s";
inline constexpr wchar_t SelectionNamespaces[] = L"SelectionNamespaces";
}  // namespace Vocabulary

namespace Prefix {
// Written in front of the plug-in's own names; the host declares the device namespace under it.
inline constexpr wchar_t Private[] = L"ns0000:";
// The framework and keywords prefixes as the host writes them, for lookups that name them.
inline constexpr wchar_t Framework[] = L"psf:";
inline constexpr wchar_t Keywords[] = L"psk:";
}  // namespace Prefix

// The plug-in's private features.
namespace PrivateFeature {
inline constexpr wchar_t JobZXApplicationTracking[] = L"JobZXApplicationTracking";
}

}  // namespace PrintSchema
