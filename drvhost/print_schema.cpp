#include "drvhost/print_schema.h"

#include "drvhost/text.h"
#include "drvhost/xml_document.h"
#include "util/scoped.h"

#include <cctype>
#include <cstdlib>
#include <map>
#include <optional>
#include <sstream>

namespace drvhost {
namespace {

constexpr char kKeywordsPrefix[] = "psk:";
constexpr char kDevicePrefix[] = "ns0000:";

// Features that the Print Schema nests inside another feature's element.
struct NestedFeature {
    const char* child;
    const char* parent;
};
constexpr NestedFeature kNestedFeatures[] = {
    {"PresentationDirection", "DocumentNUp"},
    {"JobNUpContiguouslyPresentationOrder", "JobNUpAllDocumentsContiguously"},
};

const char* ParentOf(const std::string& feature) {
    for (const NestedFeature& nested : kNestedFeatures) {
        if (feature == nested.child) return nested.parent;
    }
    return nullptr;
}

// A keyword made into an XML name: names cannot start with a digit, '.' or '-', and hold only
// letters, digits, '.', '-' and '_'.
std::string XmlName(const std::string& keyword) {
    std::string name;
    if (keyword.empty() || !(std::isalpha(static_cast<unsigned char>(keyword[0])) || keyword[0] == '_')) name = "_";
    for (char c : keyword) {
        const bool valid = std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-' || c == '_';
        name += valid ? c : '_';
    }
    return name;
}

std::string MappedName(const std::string& schemaName) {
    return schemaName.find(':') != std::string::npos ? schemaName : kKeywordsPrefix + schemaName;
}

std::wstring W(const std::string& text) { return Utf8ToWide(text); }

std::wstring IntegerValue(long value) {
    return L"<psf:Value xsi:type=\"xsd:integer\">" + std::to_wstring(value) + L"</psf:Value>";
}

std::wstring ScoredProperty(const wchar_t* name, long value) {
    return std::wstring(L"<psf:ScoredProperty name=\"psk:") + name + L"\">" + IntegerValue(value) +
           L"</psf:ScoredProperty>";
}

bool ParseNumber(const std::string& text, long& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    value = std::strtol(text.c_str(), &end, 10);
    return *end == '\0';
}

// Scored properties that standard options carry beside their name.
std::wstring ScoredPropertiesOf(const FeatureDescription& feature, const OptionDescription& option) {
    long value = 0;
    if ((feature.schemaName == "DocumentNUp" || feature.schemaName == "JobNUpAllDocumentsContiguously") &&
        ParseNumber(option.keyword, value)) {
        return ScoredProperty(L"PagesPerSheet", value);
    }
    int x = 0, y = 0;
    if (feature.schemaName == "PageResolution" && std::sscanf(option.keyword.c_str(), "%dx%d", &x, &y) == 2) {
        return ScoredProperty(L"ResolutionX", x) + ScoredProperty(L"ResolutionY", y);
    }
    return {};
}

std::wstring NamespaceDeclarations(const std::wstring& deviceNamespace) {
    return std::wstring(L" xmlns:psf=\"") + kFrameworkUri + L"\" xmlns:psk=\"" + kKeywordsUri + L"\" xmlns:xsi=\"" +
           kSchemaInstanceUri + L"\" xmlns:xsd=\"" + kSchemaUri + L"\" xmlns:ns0000=\"" + EscapeXml(deviceNamespace) +
           L"\" version=\"1\"";
}

class TicketWriter {
public:
    TicketWriter(const PrinterDescription& description, const SelectionSource& selectionOf)
        : m_description(description), m_selectionOf(selectionOf) {}

    std::wstring Feature(size_t index) const {
        const FeatureDescription& feature = m_description.features[index];
        const DWORD selected = m_selectionOf(index);
        if (selected >= feature.options.size()) return {};
        const OptionDescription& option = feature.options[selected];
        std::wstring xml = L"<psf:Feature name=\"" + W(SchemaFeatureName(feature)) + L"\"><psf:Option name=\"" +
                           W(SchemaOptionName(option)) + L"\">" + ScoredPropertiesOf(feature, option) +
                           L"</psf:Option>";
        for (size_t child = 0; child < m_description.features.size(); ++child) {
            const char* parent = ParentOf(m_description.features[child].keyword);
            if (parent && feature.keyword == parent) xml += Feature(child);
        }
        return xml + L"</psf:Feature>";
    }

private:
    const PrinterDescription& m_description;
    const SelectionSource& m_selectionOf;
};

std::wstring StringProperty(const wchar_t* name, const std::wstring& value) {
    return std::wstring(L"<psf:Property name=\"") + name + L"\"><psf:Value xsi:type=\"xsd:string\">" +
           EscapeXml(value) + L"</psf:Value></psf:Property>";
}

std::wstring QNameProperty(const wchar_t* name, const wchar_t* value) {
    return std::wstring(L"<psf:Property name=\"") + name + L"\"><psf:Value xsi:type=\"xsd:QName\">" + value +
           L"</psf:Value></psf:Property>";
}

std::wstring AttributeOf(IXMLDOMNode* node, const wchar_t* name) {
    ComPtr<IXMLDOMElement> element;
    if (FAILED(node->QueryInterface(IID_IXMLDOMElement, reinterpret_cast<void**>(element.GetAddressOf())))) return {};
    zx::unique_variant value;
    const zx::unique_bstr attributeName = zx::MakeBstr(name);
    if (element->getAttribute(attributeName.get(), value.put()) != S_OK || value.type() != VT_BSTR) return {};
    return value.get()->bstrVal ? value.get()->bstrVal : L"";
}

ComPtr<IXMLDOMNode> SelectSingle(IXMLDOMNode* context, const wchar_t* query) {
    ComPtr<IXMLDOMNode> node;
    context->selectSingleNode(zx::MakeBstr(query).get(), &node);
    return node;
}

std::wstring TextOf(IXMLDOMNode* node) {
    zx::unique_bstr text;
    if (node == nullptr || FAILED(node->get_text(text.put())) || !text) return {};
    return text.get();
}

// Reading: names in a ticket are QNames whose prefixes the ticket itself declares.
class QNameResolver {
public:
    explicit QNameResolver(IXMLDOMDocument2* ticket) {
        ComPtr<IXMLDOMElement> root;
        ComPtr<IXMLDOMNamedNodeMap> attributes;
        if (FAILED(ticket->get_documentElement(&root)) || !root || FAILED(root->get_attributes(&attributes))) return;
        long count = 0;
        attributes->get_length(&count);
        // Walked by index: declarations are not reachable by name or iteration on every MSXML.
        for (long i = 0; i < count; ++i) {
            ComPtr<IXMLDOMNode> attribute;
            zx::unique_bstr name;
            if (FAILED(attributes->get_item(i, &attribute)) || !attribute ||
                FAILED(attribute->get_nodeName(name.put())) || !name) {
                continue;
            }
            const std::wstring qualified = name.get();
            if (qualified.rfind(L"xmlns:", 0) == 0) m_namespaces[qualified.substr(6)] = TextOf(attribute.Get());
        }
    }

    // "uri|local" for a QName, or nothing when its prefix is not declared.
    std::optional<std::wstring> Expand(const std::wstring& qname) const {
        const size_t colon = qname.find(L':');
        if (colon == std::wstring::npos) return std::nullopt;
        const auto found = m_namespaces.find(qname.substr(0, colon));
        if (found == m_namespaces.end()) return std::nullopt;
        return found->second + L"|" + qname.substr(colon + 1);
    }

private:
    std::map<std::wstring, std::wstring> m_namespaces;
};

std::wstring ExpandOwnName(const std::string& name, const std::wstring& deviceNamespace) {
    const size_t colon = name.find(':');
    const std::string prefix = name.substr(0, colon);
    const std::wstring uri = prefix == "psk" ? kKeywordsUri : deviceNamespace;
    return uri + L"|" + W(name.substr(colon + 1));
}

// The option of a feature element: by its name, or, for an unnamed N-up option, by its pages.
std::optional<size_t> OptionOf(IXMLDOMNode* featureNode, const FeatureDescription& feature,
                               const QNameResolver& resolver, const std::wstring& deviceNamespace) {
    ComPtr<IXMLDOMNode> option = SelectSingle(featureNode, L"psf:Option");
    if (!option) return std::nullopt;
    const auto expanded = resolver.Expand(AttributeOf(option.Get(), L"name"));
    if (expanded) {
        for (size_t i = 0; i < feature.options.size(); ++i) {
            if (ExpandOwnName(SchemaOptionName(feature.options[i]), deviceNamespace) == *expanded) return i;
        }
        return std::nullopt;
    }
    ComPtr<IXMLDOMNode> pages =
        SelectSingle(option.Get(), L"psf:ScoredProperty[substring-after(@name, ':') = 'PagesPerSheet']/psf:Value");
    if (pages) return feature.FindOption(WideToUtf8(TextOf(pages.Get())));
    return std::nullopt;
}

}  // namespace

void BindFrameworkPrefix(IXMLDOMDocument2* document) {
    zx::unique_variant namespaces;
    namespaces.get()->vt = VT_BSTR;
    namespaces.get()->bstrVal = zx::MakeBstr((std::wstring(L"xmlns:psf='") + kFrameworkUri + L"'").c_str()).release();
    document->setProperty(zx::MakeBstr(L"SelectionNamespaces").get(), *namespaces);
}

std::string SchemaFeatureName(const FeatureDescription& feature) {
    if (!feature.schemaName.empty()) return MappedName(feature.schemaName);
    return kDevicePrefix + XmlName("Job" + feature.keyword);
}

std::string SchemaOptionName(const OptionDescription& option) {
    if (!option.schemaName.empty()) return MappedName(option.schemaName);
    return kDevicePrefix + XmlName(option.keyword);
}

std::wstring BuildPrintTicket(const PrinterDescription& description, const SelectionSource& selectionOf,
                              const std::wstring& deviceNamespace) {
    const TicketWriter writer(description, selectionOf);
    std::wstring xml = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<psf:PrintTicket" +
                       NamespaceDeclarations(deviceNamespace) + L">";
    for (size_t i = 0; i < description.features.size(); ++i) {
        if (ParentOf(description.features[i].keyword) == nullptr) xml += writer.Feature(i);
    }
    return xml + L"</psf:PrintTicket>";
}

std::wstring BuildPrintCapabilities(const PrinterDescription& description, const std::wstring& deviceNamespace) {
    std::wstring xml = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<psf:PrintCapabilities" +
                       NamespaceDeclarations(deviceNamespace) + L">";
    for (const FeatureDescription& feature : description.features) {
        xml += L"<psf:Feature name=\"" + W(SchemaFeatureName(feature)) + L"\">" +
               QNameProperty(L"psf:SelectionType", L"psk:PickOne") +
               StringProperty(L"psk:DisplayName", feature.displayName);
        for (const OptionDescription& option : feature.options) {
            xml += L"<psf:Option name=\"" + W(SchemaOptionName(option)) + L"\">" +
                   StringProperty(L"psk:DisplayName", option.displayName) + ScoredPropertiesOf(feature, option) +
                   L"</psf:Option>";
        }
        xml += L"</psf:Feature>";
    }
    return xml + L"</psf:PrintCapabilities>";
}

std::vector<std::pair<size_t, size_t>> ReadTicketSelections(IXMLDOMDocument2* ticket,
                                                            const PrinterDescription& description,
                                                            const std::wstring& deviceNamespace) {
    std::vector<std::pair<size_t, size_t>> selections;
    const QNameResolver resolver(ticket);
    BindFrameworkPrefix(ticket);

    ComPtr<IXMLDOMNodeList> features;
    if (FAILED(ticket->selectNodes(zx::MakeBstr(L"//psf:Feature").get(), &features)) || !features) return selections;

    ComPtr<IXMLDOMNode> node;
    while (features->nextNode(&node) == S_OK && node) {
        const auto expanded = resolver.Expand(AttributeOf(node.Get(), L"name"));
        for (size_t index = 0; expanded && index < description.features.size(); ++index) {
            const FeatureDescription& feature = description.features[index];
            if (ExpandOwnName(SchemaFeatureName(feature), deviceNamespace) != *expanded) continue;
            if (const auto option = OptionOf(node.Get(), feature, resolver, deviceNamespace)) {
                selections.emplace_back(index, *option);
            }
            break;
        }
        node.Reset();
    }
    return selections;
}

}  // namespace drvhost
