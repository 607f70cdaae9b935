// The Feature elements of a PrintTicket in document order, with their names: what the query
// "//" + framework prefix + "Feature" selects. The ticket handler answers its feature lookups
// from it instead of running a query for each, and keeps it in step with its own edits; after an
// edit it cannot follow, the index reads the document again at the next lookup.
#pragma once

#include "util/scoped.h"

#include <msxml2.h>

#include <string>
#include <vector>

// Whether node is an element of the Print Schema framework namespace with that local name.
bool IsFrameworkElement(IXMLDOMNode* node, const wchar_t* localName);

// Calls visit(node) for each node below root, in document order, until it returns false.
template <typename Visit>
void VisitDescendants(IXMLDOMNode* root, Visit&& visit) {
    zx::ComPtr<IXMLDOMNode> node;
    root->get_firstChild(&node);
    std::vector<zx::ComPtr<IXMLDOMNode>> parents;
    while (node) {
        if (!visit(node.Get())) return;
        zx::ComPtr<IXMLDOMNode> next;
        if (node->get_firstChild(&next) == S_OK && next) {
            parents.push_back(node);
        } else {
            node->get_nextSibling(&next);
            while (!next && !parents.empty()) {
                parents.back()->get_nextSibling(&next);
                parents.pop_back();
            }
        }
        node = next;
    }
}

class VFeatureIndex {
public:
    // The positions of the features named fullName, in document order. False when the document
    // cannot be read that way, memory for it included; the caller then runs its query.
    bool Find(IXMLDOMDocument2* document, const wchar_t* frameworkPrefix, const wchar_t* fullName,
              std::vector<size_t>& positions) noexcept;
    IXMLDOMNode* Node(size_t position) const noexcept { return m_entries[position].node.Get(); }
    // The position of the last feature inside the subtree of the one at ancestor: the features
    // after ancestor up to it lie inside, in document order.
    size_t LastInside(size_t ancestor) const;

    // Edits to follow; one that cannot be followed makes the index read the document again.
    // The features at these positions (ascending) have left the document with their subtrees.
    void Removed(const std::vector<size_t>& positions) noexcept;
    // subtree has become the root element's last child.
    void Appended(IXMLDOMNode* subtree) noexcept;
    void Invalidate() noexcept;

private:
    struct Entry {
        std::wstring name;
        zx::ComPtr<IXMLDOMNode> node;
    };
    bool Read(IXMLDOMDocument2* document, const wchar_t* frameworkPrefix);
    // The features below the one at position; in document order they are the entries after it.
    size_t FeaturesInside(size_t position) const;
    void Add(IXMLDOMNode* feature);

    std::vector<Entry> m_entries;
    bool m_valid = false;
};
