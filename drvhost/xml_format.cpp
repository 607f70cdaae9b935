#include "drvhost/xml_format.h"

#include "drvhost/xml_document.h"
#include "util/scoped.h"

#include <map>
#include <vector>

namespace drvhost {
namespace {

std::wstring NameOf(IXMLDOMNode* node) {
    zx::unique_bstr name;
    node->get_nodeName(name.put());
    return name ? name.get() : L"";
}

std::wstring TextOf(IXMLDOMNode* node) {
    zx::unique_bstr text;
    node->get_text(text.put());
    return text ? text.get() : L"";
}

DOMNodeType TypeOf(IXMLDOMNode* node) {
    DOMNodeType type = NODE_INVALID;
    node->get_nodeType(&type);
    return type;
}

std::vector<ComPtr<IXMLDOMNode>> ChildrenOf(IXMLDOMNode* node) {
    std::vector<ComPtr<IXMLDOMNode>> children;
    ComPtr<IXMLDOMNodeList> list;
    long count = 0;
    if (FAILED(node->get_childNodes(&list)) || !list || FAILED(list->get_length(&count))) return children;
    for (long i = 0; i < count; ++i) {
        ComPtr<IXMLDOMNode> child;
        if (SUCCEEDED(list->get_item(i, &child)) && child) children.push_back(child);
    }
    return children;
}

// Namespace declarations in force: prefix (empty for the default namespace) to URI.
using Scope = std::map<std::wstring, std::wstring>;

// The attributes as they read, leaving out namespace declarations that the enclosing elements
// already made (nodes created apart from the document carry their own).
std::wstring AttributesOf(IXMLDOMNode* node, Scope& scope) {
    std::wstring text;
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    long count = 0;
    if (FAILED(node->get_attributes(&attributes)) || !attributes || FAILED(attributes->get_length(&count))) {
        return text;
    }
    for (long i = 0; i < count; ++i) {
        ComPtr<IXMLDOMNode> attribute;
        if (FAILED(attributes->get_item(i, &attribute)) || !attribute) continue;
        const std::wstring name = NameOf(attribute.Get()), value = TextOf(attribute.Get());
        const bool declaration = name == L"xmlns" || name.rfind(L"xmlns:", 0) == 0;
        const std::wstring prefix = name.size() > 6 ? name.substr(6) : std::wstring();
        if (declaration) {
            const auto bound = scope.find(prefix);
            if (bound != scope.end() && bound->second == value) continue;
            scope[prefix] = value;
        }
        text += L" " + name + L"=\"" + EscapeXml(value) + L"\"";
    }
    return text;
}

void Write(IXMLDOMNode* node, const std::wstring& indent, Scope scope, std::wstring& out) {
    switch (TypeOf(node)) {
    case NODE_ELEMENT: {
        const std::wstring name = NameOf(node);
        out += indent + L"<" + name + AttributesOf(node, scope);
        const auto children = ChildrenOf(node);
        if (children.empty()) {
            out += L"/>\n";
        } else if (children.size() == 1 && TypeOf(children[0].Get()) == NODE_TEXT) {
            out += L">" + EscapeXml(TextOf(children[0].Get())) + L"</" + name + L">\n";
        } else {
            out += L">\n";
            for (const auto& child : children) Write(child.Get(), indent + L"  ", scope, out);
            out += indent + L"</" + name + L">\n";
        }
        break;
    }
    case NODE_TEXT: out += indent + EscapeXml(TextOf(node)) + L"\n"; break;
    case NODE_COMMENT: out += indent + L"<!--" + TextOf(node) + L"-->\n"; break;
    default: break;
    }
}

}  // namespace

std::wstring FormatXml(IXMLDOMNode* document) {
    std::wstring out = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    for (const auto& child : ChildrenOf(document)) Write(child.Get(), L"", Scope{}, out);
    return out;
}

}  // namespace drvhost
