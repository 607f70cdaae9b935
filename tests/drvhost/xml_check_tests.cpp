// Where and why a text is not well-formed XML: drvhost tells the user, since MSXML under Wine
// does not.
#include "drvhost/xml_check.h"
#include "drvhost/xml_document.h"

#include <gtest/gtest.h>

using namespace drvhost;

namespace {

struct Malformed {
    const wchar_t* text;
    int line;
    int column;
    const char* reason;
};

}  // namespace

TEST(XmlCheck, FindsTheFirstProblemWithItsLineAndColumn) {
    const Malformed cases[] = {
        {L"", 1, 1, "the file is empty"},
        {L"  \n ", 2, 2, "the document has no root element"},
        {L"hello", 1, 1, "text before the root element"},
        {L" <?xml version='1.0'?><a/>", 1, 2, "the XML declaration must come first in the document"},
        {L"<a>\n  <b>\n", 3, 1, "the document ends before <b> (line 2, column 3) is closed"},
        {L"<a><b></a>", 1, 7, "</a> does not close <b> (line 1, column 4)"},
        {L"<a x='1' x='2'/>", 1, 10, "the attribute x is given twice"},
        {L"<a x=1/>", 1, 6, "an attribute value must be in quotes"},
        {L"<a x='<'/>", 1, 7, "\"<\" inside an attribute value"},
        {L"<a x='1'y='2'/>", 1, 9, "expected white space, \">\" or \"/>\" in the tag <a>"},
        {L"<a x/>", 1, 5, "expected \"=\" after the attribute x"},
        {L"<a>&nbsp;</a>", 1, 4, "an unknown entity &nbsp;"},
        {L"<a>fish & chips</a>", 1, 9, "\"&\" that starts no reference (write &amp;)"},
        {L"<a>&#xZZ;</a>", 1, 4, "a malformed character reference"},
        {L"<a><!-- x -- y --></a>", 1, 11, "\"--\" inside a comment"},
        {L"<a><![CDATA[x</a>", 1, 4, "the document ends inside a CDATA section"},
        {L"<a>]]></a>", 1, 4, "\"]]>\" outside a CDATA section"},
        {L"<a/><b/>", 1, 5, "a second root element; a document has one"},
        {L"<a/>x", 1, 5, "text after the root element"},
        {L"<1a/>", 1, 2, "expected an element name after \"<\""},
        {L"<a>\x01</a>", 1, 4, "the character U+0001 is not allowed in XML"},
        {L"<a\r\n  b='1'\r\n", 1, 1, "the document ends inside the tag <a>"},
    };
    for (const Malformed& malformed : cases) {
        const auto problem = FindXmlProblem(malformed.text);
        ASSERT_TRUE(problem.has_value()) << malformed.reason;
        EXPECT_EQ(malformed.reason, problem->reason);
        EXPECT_EQ(malformed.line, problem->line) << malformed.reason;
        EXPECT_EQ(malformed.column, problem->column) << malformed.reason;
    }
}

TEST(XmlCheck, AcceptsWhatMsxmlAccepts) {
    const wchar_t* const documents[] = {
        L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!-- saved -->\n<a/>\n",
        L"<p:a xmlns:p='urn:x' p:b=\"&lt;&#60;&#x3c;\"><![CDATA[<&]]><?pi data?><c>text &amp; more</c></p:a>",
        L"<a  x = '1'\n\ty=\"2\" ></a ><!-- after -->",
    };
    for (const wchar_t* document : documents) {
        EXPECT_FALSE(FindXmlProblem(document).has_value()) << FindXmlProblem(document)->reason;
        EXPECT_NO_THROW(ParseXml(document));
    }
}

TEST(XmlCheck, ParseErrorsCarryThePosition) {
    try {
        ParseXml(L"<a>\n<b></a>");
        FAIL() << "parsed";
    } catch (const XmlError& e) {
        EXPECT_EQ(std::pair(2, 4), std::pair(e.Line(), e.Column()));
        EXPECT_STREQ("XML line 2, column 4: </a> does not close <b> (line 2, column 1)", e.what());
    }
}
