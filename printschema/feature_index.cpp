#include "printschema/feature_index.h"

#include "printschema/print_schema_names.h"
#include "util/msxml_ids.h"

#include <cwchar>

using namespace PrintSchema;

// The local name rules out most elements, so it is read first.
bool IsFrameworkElement(IXMLDOMNode* node, const wchar_t* localName) {
    DOMNodeType type = NODE_INVALID;
    if (FAILED(node->get_nodeType(&type)) || type != NODE_ELEMENT) return false;
    zx::unique_bstr name, uri;
    return SUCCEEDED(node->get_baseName(name.put())) && name && std::wcscmp(name.get(), localName) == 0 &&
           SUCCEEDED(node->get_namespaceURI(uri.put())) && uri && std::wcscmp(uri.get(), Uri::Framework) == 0;
}

namespace {

// The name attribute's text, empty when the element has none.
std::wstring NameOf(IXMLDOMNode* feature) {
    zx::ComPtr<IXMLDOMElement> element;
    zx::unique_variant name;
    if (FAILED(feature->QueryInterface(msxml6::IID_IXMLDOMElement, reinterpret_cast<void**>(element.GetAddressOf()))) ||
        element->getAttribute(zx::MakeBstr(Vocabulary::Name).get(), name.put()) != S_OK ||
        name.type() != VT_BSTR) {
        return {};
    }
    const BSTR text = V_BSTR(name.get());
    return std::wstring(text, ::SysStringLen(text));
}

}  // namespace

bool VFeatureIndex::Find(IXMLDOMDocument2* document, const wchar_t* frameworkPrefix, const wchar_t* fullName,
                         std::vector<size_t>& positions) noexcept {
    try {
        positions.clear();
        if (!m_valid && !Read(document, frameworkPrefix)) return false;
        for (size_t position = 0; position < m_entries.size(); ++position) {
            if (m_entries[position].name == fullName) positions.push_back(position);
        }
        return true;
    } catch (...) {
        Invalidate();
        return false;
    }
}

bool VFeatureIndex::Read(IXMLDOMDocument2* document, const wchar_t* frameworkPrefix) {
    m_entries.clear();
    const zx::unique_bstr query = zx::MakeBstr((std::wstring(L"//") + frameworkPrefix + Vocabulary::Feature).c_str());
    zx::ComPtr<IXMLDOMNodeList> features;
    if (FAILED(document->selectNodes(query.get(), &features)) || !features) return false;
    zx::ComPtr<IXMLDOMNode> feature;
    while (features->nextNode(&feature) == S_OK && feature) {
        m_entries.push_back({NameOf(feature.Get()), feature});
        feature.Reset();
    }
    m_valid = true;
    return true;
}

size_t VFeatureIndex::FeaturesInside(size_t position) const {
    size_t count = 0;
    VisitDescendants(Node(position), [&count](IXMLDOMNode* node) {
        if (IsFrameworkElement(node, Vocabulary::Feature)) ++count;
        return true;
    });
    return count;
}

size_t VFeatureIndex::LastInside(size_t ancestor) const { return ancestor + FeaturesInside(ancestor); }

void VFeatureIndex::Removed(const std::vector<size_t>& positions) noexcept {
    if (!m_valid) return;
    try {
        std::vector<bool> gone(m_entries.size(), false);
        for (size_t position : positions) {
            if (gone[position]) continue;  // inside a feature removed before it
            const size_t last = position + FeaturesInside(position);
            for (size_t inside = position; inside <= last && inside < gone.size(); ++inside) gone[inside] = true;
        }
        std::vector<Entry> kept;
        kept.reserve(m_entries.size());
        for (size_t position = 0; position < m_entries.size(); ++position) {
            if (!gone[position]) kept.push_back(std::move(m_entries[position]));
        }
        m_entries.swap(kept);
    } catch (...) {
        Invalidate();
    }
}

void VFeatureIndex::Appended(IXMLDOMNode* subtree) noexcept {
    if (!m_valid) return;
    try {
        if (IsFrameworkElement(subtree, Vocabulary::Feature)) Add(subtree);
        VisitDescendants(subtree, [this](IXMLDOMNode* node) {
            if (IsFrameworkElement(node, Vocabulary::Feature)) Add(node);
            return true;
        });
    } catch (...) {
        Invalidate();
    }
}

void VFeatureIndex::Add(IXMLDOMNode* feature) { m_entries.push_back({NameOf(feature), feature}); }

void VFeatureIndex::Invalidate() noexcept {
    m_valid = false;
    m_entries.clear();
}
