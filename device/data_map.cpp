#include "device/data_map.h"

#include "util/com_scope.h"
#include "util/msxml_ids.h"
#include "util/scoped.h"

#include <msxml2.h>

#include <optional>

namespace zx {
namespace {

enum class MapKind { Xml, Oid, Ipp };

struct ProtocolMap {
    const wchar_t* protocol;  // compared without regard to case
    MapKind kind;
};
constexpr ProtocolMap kProtocolMaps[] = {
    {L"WS", MapKind::Xml},  {L"KELP", MapKind::Xml}, {L"PLSXML", MapKind::Xml},
    {L"OID", MapKind::Oid}, {L"IPP", MapKind::Ipp},
};

std::optional<MapKind> MapKindOf(const std::wstring& protocol) {
    for (const ProtocolMap& entry : kProtocolMaps) {
        if (::CompareStringOrdinal(protocol.c_str(), static_cast<int>(protocol.size()), entry.protocol, -1, TRUE) ==
            CSTR_EQUAL) {
            return entry.kind;
        }
    }
    return std::nullopt;
}

// The XML maps are told apart by their Protocol attribute, which is matched as the device
// reported it: attribute values compare exactly.
std::wstring BaseExpression(MapKind kind, const std::wstring& protocol) {
    switch (kind) {
    case MapKind::Xml: return L"//XMLDataMap[@Protocol='" + protocol + L"']";
    case MapKind::Oid: return L"//OIDDataMap";
    case MapKind::Ipp: return L"//IPPDataMap";
    }
    return {};
}

ComPtr<IXMLDOMDocument> LoadDataMap(const std::wstring& path) {
    ComPtr<IXMLDOMDocument> document;
    if (FAILED(::CoCreateInstance(msxml6::CLSID_DOMDocument60, nullptr, CLSCTX_INPROC_SERVER,
                                  msxml6::IID_IXMLDOMDocument, reinterpret_cast<void**>(document.GetAddressOf())))) {
        return nullptr;
    }
    document->put_async(VARIANT_FALSE);
    unique_bstr file = MakeBstr(path.c_str());
    VARIANT source;
    source.vt = VT_BSTR;
    source.bstrVal = file.get();
    VARIANT_BOOL loaded = VARIANT_FALSE;
    if (FAILED(document->load(source, &loaded)) || loaded != VARIANT_TRUE) return nullptr;
    return document;
}

// An attribute of an element: absent when the element has none of that name or it cannot be
// read; present and possibly empty otherwise.
std::optional<std::wstring> AttributeOf(IXMLDOMNamedNodeMap* attributes, const wchar_t* name) {
    ComPtr<IXMLDOMNode> attribute;
    if (attributes->getNamedItem(MakeBstr(name).get(), attribute.GetAddressOf()) != S_OK || !attribute) {
        return std::nullopt;
    }
    unique_bstr text;
    if (FAILED(attribute->get_text(text.put()))) return std::nullopt;
    return text ? std::wstring(text.get(), ::SysStringLen(text.get())) : std::wstring();
}

// The item's name with its prefix, or empty when the name is absent or empty.
std::wstring QualifiedName(const std::optional<std::wstring>& prefix, const std::optional<std::wstring>& name) {
    if (!name || name->empty()) return {};
    return prefix && !prefix->empty() ? *prefix + L":" + *name : *name;
}

struct ItemElement {
    const wchar_t* element;  // selected below the map and matched exactly by node name
    void (*append)(IXMLDOMNamedNodeMap* attributes, std::vector<std::wstring>& items);
};

void AppendIfNamed(std::vector<std::wstring>& items, std::wstring item) {
    if (!item.empty()) items.push_back(std::move(item));
}

void AppendStaticItem(IXMLDOMNamedNodeMap* attributes, std::vector<std::wstring>& items) {
    AppendIfNamed(items, QualifiedName(AttributeOf(attributes, L"Prefix"), AttributeOf(attributes, L"Name")));
}

// A data item without a Name attribute is named by its AttributeID; an empty Name still wins.
void AppendDataItem(IXMLDOMNamedNodeMap* attributes, std::vector<std::wstring>& items) {
    std::optional<std::wstring> name = AttributeOf(attributes, L"Name");
    if (!name) name = AttributeOf(attributes, L"AttributeID");
    AppendIfNamed(items, QualifiedName(AttributeOf(attributes, L"Prefix"), name));
}

// A sequence item is asked by its name, then for a number of entries ("Name.3.") or, without a
// readable Count, up to its end ("Name.UntilEnd").
void AppendNextItem(IXMLDOMNamedNodeMap* attributes, std::vector<std::wstring>& items) {
    const std::wstring item = QualifiedName(AttributeOf(attributes, L"Prefix"), AttributeOf(attributes, L"Name"));
    const std::optional<std::wstring> untilEnd = AttributeOf(attributes, L"UntilEnd");
    const std::optional<std::wstring> count = AttributeOf(attributes, L"Count");
    if (item.empty()) return;
    items.push_back(item);
    if (count) {
        if (!count->empty()) items.push_back(item + L"." + *count + L".");
    } else if (untilEnd && *untilEnd == L"true") {
        items.push_back(item + L".UntilEnd");
    }
}

constexpr ItemElement kStaticItems = {L"StaticDataItem", AppendStaticItem};
constexpr ItemElement kDataItems = {L"DataItem", AppendDataItem};
constexpr ItemElement kNextItems = {L"NextDataItem", AppendNextItem};

bool IsElementNamed(IXMLDOMNode* node, const wchar_t* name) {
    unique_bstr nodeName;
    return SUCCEEDED(node->get_nodeName(nodeName.put())) && nodeName && ::wcscmp(nodeName.get(), name) == 0;
}

// One pass over the elements of a kind below the map, in document order. True when it
// appended at least one item string.
bool RunPass(IXMLDOMDocument* document, const std::wstring& base, const ItemElement& kind,
             std::vector<std::wstring>& items) {
    ComPtr<IXMLDOMNodeList> nodes;
    const std::wstring expression = base + L"//" + kind.element;
    if (FAILED(document->selectNodes(MakeBstr(expression.c_str()).get(), nodes.GetAddressOf())) || !nodes) {
        return false;
    }
    long length = 0;
    if (FAILED(nodes->get_length(&length))) return false;
    const size_t before = items.size();
    for (long i = 0; i < length; ++i) {
        ComPtr<IXMLDOMNode> node;
        ComPtr<IXMLDOMNamedNodeMap> attributes;
        if (nodes->get_item(i, node.GetAddressOf()) != S_OK || !node || !IsElementNamed(node.Get(), kind.element)) {
            continue;
        }
        if (FAILED(node->get_attributes(attributes.GetAddressOf())) || !attributes) continue;
        kind.append(attributes.Get(), items);
    }
    return items.size() > before;
}

bool EvaluateLoadedMap(IXMLDOMDocument* document, MapKind kind, const std::wstring& base,
                       std::vector<std::wstring>& items) {
    if (!RunPass(document, base, kStaticItems, items)) return false;
    const bool dataItems = RunPass(document, base, kDataItems, items);
    const bool nextItems = kind == MapKind::Oid && RunPass(document, base, kNextItems, items);
    return dataItems || nextItems;
}

}  // namespace

bool EvaluateDataMap(std::vector<std::wstring>& items, const std::wstring& dataMapPath, const std::wstring& protocol) {
    const ComScope com;
    if (!com.Usable()) return false;
    const ComPtr<IXMLDOMDocument> document = LoadDataMap(dataMapPath);
    if (!document) return false;
    const std::optional<MapKind> kind = MapKindOf(protocol);
    if (!kind) return false;
    return EvaluateLoadedMap(document.Get(), *kind, BaseExpression(*kind, protocol), items);
}

}  // namespace zx
