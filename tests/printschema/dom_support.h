// Real MSXML 6 documents for the Print Schema tests: COM for the whole program, documents loaded
// from text, and read-back helpers. Wine's MSXML finds namespaced attributes made with createNode
// only after a re-parse, so checks of written documents read a re-parsed copy.
#pragma once

#include "drvhost/print_schema.h"
#include "util/scoped.h"

#include <msxml2.h>

#include <string>

namespace zxtest {

using drvhost::kFrameworkUri;
using drvhost::kKeywordsUri;

zx::ComPtr<IXMLDOMDocument2> LoadDocument(const std::wstring& xml);
// A re-parsed copy, with psf, psk, xsi and ns0000 bound for queries.
zx::ComPtr<IXMLDOMDocument2> Reparsed(IXMLDOMDocument2* document);
// The text of the first node the query selects, or "<none>".
std::wstring TextAt(IXMLDOMNode* context, const std::wstring& query);
long CountOf(IXMLDOMNode* context, const wchar_t* query);
std::wstring XmlOf(IXMLDOMNode* node);
std::wstring NameOf(IXMLDOMNode* node);
// A PrintTicket root declaring the usual namespaces around body.
std::wstring Ticket(const std::wstring& body);
// A psf:Feature element named name with one psf:Option named option.
std::wstring Feature(const std::wstring& name, const std::wstring& option);
// Replaces every occurrence of from in text by to.
void ReplaceAll(std::wstring& text, const std::wstring& from, const std::wstring& to);

}  // namespace zxtest
