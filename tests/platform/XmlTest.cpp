// SPDX-License-Identifier: Apache-2.0
#include "platform/Xml.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "Format/Ifc/AssertLog.h"

namespace oxa::xml {
namespace {

using ifc::AssertLog;
using testing::ElementsAre;

// What a File says when a document is refused.
class Faults : public ExceptionInterface {
public:
    void vFault(std::string_view sSource, std::string_view sText, std::size_t iOffset) override {
        m_sources.emplace_back(sSource);
        m_texts.emplace_back(sText);
        m_offsets.push_back(iOffset);
    }
    std::vector<std::string> m_sources;
    std::vector<std::string> m_texts;
    std::vector<std::size_t> m_offsets;
};

struct TestFile : File {
    explicit TestFile(ExceptionInterface* pExceptions = nullptr)
        : File(pExceptions, VerboseLevel::Default, ValidateLevel::Default) {}

    std::optional<const_Element> parseText(const std::string& sText, ExceptionInterface* pExceptions = nullptr) {
        std::istringstream in(sText);
        return parse(in, "text", pExceptions);
    }
    [[nodiscard]] std::string sSaved() const {
        std::ostringstream out;
        return save(out, nullptr, Encoding::Utf8, LineEnding::Lf) ? out.str() : "not saved";
    }
};

// "a[x=1](b 'text')": name, attributes, children.
std::string sShow(const const_Node& node) {
    if (!const_Element::toWrapper(node)) return '\'' + std::string(node.getNodeValue()) + '\'';
    std::string sText(node.getNodeName());
    const const_NamedNodeMap attributes = node.AttributesGet();
    for (std::size_t i = 0; i < attributes.LengthGet(); ++i)
        sText.append("[")
            .append(attributes.ItemGet(i).getNodeName())
            .append("=")
            .append(attributes.ItemGet(i).getValue()) += ']';
    if (!node.boHasChildNodes()) return sText;
    sText += '(';
    for (auto child = node.ChildNodesGet().getFirstItem(); child; child = child->NextSiblingGet())
        sText.append(sText.back() == '(' ? "" : " ").append(sShow(*child));
    return sText + ')';
}

struct ParseRow {
    const char* sRule;
    std::string sText;
    const char* sTree;
};
const ParseRow g_parseRows[] = {
    {"an element alone", "<a/>", "a"},
    {"with its declaration", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>\n", "a"},
    {"behind a byte order mark", "\xEF\xBB\xBF<a/>", "a"},
    {"attributes in order", "<a y='2' x=\"1\"/>", "a[y=2][x=1]"},
    {"names with a prefix", "<i:a xsi:nil='true'/>", "i:a[xsi:nil=true]"},
    {"names beyond ASCII", "<\xC3\x84/>", "\xC3\x84"},
    {"a text", "<a>b c</a>", "a('b c')"},
    {"a text keeps its blanks", "<a> b </a>", "a(' b ')"},
    {"blanks alone are a text", "<a> </a>", "a(' ')"},
    {"blanks between elements are none", "<a>\n <b/>\n <c/> </a>", "a(b c)"},
    {"a text between elements", "<a><b/>t<c/></a>", "a(b 't' c)"},
    {"a section of characters", "<a><![CDATA[<&>]]></a>", "a('<&>')"},
    {"comments are left out", "<a><!-- <b/> --><c/></a>", "a(c)"},
    {"instructions are left out", "<?p 1?><a><?p 2?></a>", "a"},
    {"the five entities", "<a x='&lt;&gt;'>&amp;&quot;&apos;</a>", "a[x=<>]('&\"'')"},
    {"characters by number", "<a x='&#65;&#x42;'>&#xdf;&#8364;</a>", "a[x=AB]('\xC3\x9F\xE2\x82\xAC')"},
    {"a decoded ampersand begins nothing", "<a>&amp;lt;</a>", "a('&lt;')"},
    {"line ends are LF", "<a>x\r\ny\rz</a>", "a('x\ny\nz')"},
    {"white space in attributes is blanks", "<a x='1\t2\n3'/>", "a[x=1 2 3]"},
    {"the characters beside those that are none", "<a>&#xD7FF;&#xE000;&#xFFFD;&#x10000;&#x10FFFF;</a>",
     "a('\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF')"},
    {"a line end by number stays", "<a x='1&#10;2'>&#13;</a>", "a[x=1\n2]('\r')"},
    {"a document type is skipped", "<!DOCTYPE a SYSTEM 'http://localhost/x.dtd'><a/>", "a"},
    {"UTF-16 with a mark", std::string("\xFF\xFE<\0a\0>\0\xAC\x20<\0/\0a\0>\0", 18), "a('\xE2\x82\xAC')"},
    {"UTF-16, the other way round", std::string("\0<\0a\0/\0>", 8), "a"},
    {"ISO 8859-1 where it says so", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xDF</a>", "a('\xC3\x9F')"},
};

TEST(XmlParse, GivesTheTree) {
    for (const ParseRow& row : g_parseRows) {
        SCOPED_TRACE(row.sRule);
        TestFile file;
        const std::optional<const_Element> root = file.parseText(row.sText);
        ASSERT_TRUE(root);
        EXPECT_EQ(sShow(*root), row.sTree);
    }
}

const ParseRow g_entityRows[] = {
    {"an entity is not expanded", "<!DOCTYPE a [<!ENTITY e 'text'>]><a x='&e;'>&e;</a>", "a[x=&e;]('&e;')"},
    {"nor one of a file", "<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><a>&e;</a>", "a('&e;')"},
    {"nor a bomb",
     "<!DOCTYPE a [<!ENTITY b 'bbbbbbbbbb'><!ENTITY c '&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;'>]><a>&d;</a>",
     "a('&d;')"},
    {"nor parameter entities", "<!DOCTYPE a [<!ENTITY % p SYSTEM 'http://localhost/'> %p;]><a/>", "a"},
};

TEST(XmlParse, LeavesEntitiesAsTheyAreWritten) {
    for (const ParseRow& row : g_entityRows) {
        SCOPED_TRACE(row.sRule);
        TestFile file;
        const std::optional<const_Element> root = file.parseText(row.sText);
        ASSERT_TRUE(root);
        EXPECT_EQ(sShow(*root), row.sTree);
        TestFile again;
        ASSERT_TRUE(again.parseText(file.sSaved()));
        EXPECT_EQ(sShow(*again.RootElementGet()), row.sTree);
    }
}

const std::string g_sManyBlanks(1000, ' ');
const ParseRow g_blankRows[] = {
    {"indentation is no text", "<a>\n" + g_sManyBlanks + "<b/>\n   <c/>\r\n     </a>\n\n    ", "a(b c)"},
    {"nor inside of tags",
     "<a\n            x='1'\n     y\n        =\n        '2'\n          ><b\n        /></a\n          >",
     "a[x=1][y=2](b)"},
    {"nor around comments", "<!-- a\n         --->\n        <a>\n         <!--\n          --></a>", "a"},
    {"blanks alone on lines are a text", "<a>\n       \n             </a>", "a('\n       \n             ')"},
    {"blanks at the start of a line of a text",
     "<a>\n     b\n              c\n                                   d </a>",
     "a('\n     b\n              c\n                                   d ')"},
    {"and of a value", "<a x='\n      1\n              2\r\n   '/>", "a[x=       1               2    ]"},
    {"beside references", "<a x='\n      &amp;'>&lt;\n        &gt;</a>", "a[x=       &]('<\n        >')"},
};

TEST(XmlParse, KeepsBlanksWhereTheyAreText) {
    for (const ParseRow& row : g_blankRows) {
        SCOPED_TRACE(row.sRule);
        TestFile file;
        ASSERT_TRUE(file.parseText(row.sText));
        EXPECT_EQ(sShow(*file.RootElementGet()), row.sTree);
    }
    for (std::size_t i = 0; i < 300; ++i) {
        TestFile file;
        ASSERT_TRUE(file.parseText("<a>\n" + std::string(i, ' ') + "b</a>"));
        EXPECT_EQ(file.RootElementGet()->FirstChildGet()->getNodeValue(), '\n' + std::string(i, ' ') + 'b');
    }
}

// Behind the tag's "<", in the bytes as they came.
TEST(XmlParse, KnowsWhereElementsBegin) {
    const std::string sText =
        "\xEF\xBB\xBF<?xml version='1.0'\n              encoding='UTF-8'?>\n         <!-- b\n                --->\n"
        "<a x='\n               1'>\n                                 text\n               <b/>\n               "
        "<c>\n                    </c>\n          <d\n             y='1'\n        ><e>&amp;\n              "
        "</e></d></a>";
    for (const char* sBehind : {"\n", "<?p?>"}) {
        SCOPED_TRACE(sBehind);
        TestFile file;
        ASSERT_TRUE(file.parseText(sText + sBehind));
        EXPECT_EQ(file.OffsetGet(*file.RootElementGet()), sText.find("<a") + 1);
        for (const std::string sName : {"b", "c", "d", "e"})
            EXPECT_EQ(file.OffsetGet(*file.RootElementGet()->ElementByTagNameGet(sName)), sText.find('<' + sName) + 1);
    }
    TestFile other;
    ASSERT_TRUE(other.parseText(std::string("\0<\0a\0/\0>", 8)));
    EXPECT_FALSE(other.OffsetGet(*other.RootElementGet())) << "not UTF-8";
    ASSERT_TRUE(other.create("a", "", true));
    EXPECT_FALSE(other.OffsetGet(*other.RootElementGet())) << "made";
    EXPECT_FALSE(other.OffsetGet(const_Element()));
}

// Longer than what is read at once, so that lines are parted.
TEST(XmlParse, TakesDocumentsOfManyPieces) {
    std::string sText = "<a>";
    std::string sTree = "a(";
    for (int i = 0; sText.size() < 3'000'000; ++i) {
        sText += "\n" + std::string(static_cast<std::size_t>(i % 150), ' ') + "<b x='" + std::to_string(i) + "'/>";
        sTree += (i ? " b[x=" : "b[x=") + std::to_string(i) + ']';
    }
    TestFile file;
    ASSERT_TRUE(file.parseText(sText + "\n</a>\n"));
    EXPECT_TRUE(sShow(*file.RootElementGet()) == sTree + ')');
    // A control character far behind: what was read before counts with the rest.
    Faults faults;
    EXPECT_FALSE(file.parseText(sText + "\x01</a>", &faults));
    EXPECT_FALSE(file.parseText(sText + "\n     </b>", &faults));
    EXPECT_THAT(faults.m_texts, ElementsAre("A character that XML can't hold", "Start-end tags mismatch"));
    EXPECT_THAT(faults.m_offsets, ElementsAre(0, sText.size() + 8));
}

// Documents of the usual kind are parsed by a way of their own; an instruction behind one forbids that.
TEST(XmlParse, GivesTheSameBothWays) {
    const std::string sText = "<?xml version='1.0' encoding='UTF-8'?>\n<!-- c -->\n<a x=\"1 &amp; 2\" y = 'q\"'>\n     "
                              "<b-b>t&#65;\r\n</b-b ><!-- d -->"
                              "<c/> <d  z='' ></d>\n<e> </e>\xC3\x9F</a>\n";
    using namespace std::string_literals;
    const std::string sOther = "\0\x01\t\n\r !\"#&'-/0:;<=>?A_a\x7F\x80\xC3\xEF"s;
    std::size_t iTaken = 0;
    const auto vCompare = [&](const std::string& sChanged) {
        TestFile file;
        if (!file.parseText(sChanged)) return;
        ++iTaken;
        TestFile other;
        ASSERT_TRUE(other.parseText(sChanged + "<?p?>"));
        EXPECT_EQ(sShow(*file.RootElementGet()), sShow(*other.RootElementGet()));
    };
    for (std::size_t i = 0; i + 1 < sText.size(); ++i) {   // the last byte is not looked at by itself
        SCOPED_TRACE(i);
        vCompare(sText.substr(0, i) + sText.substr(i + 1));
        for (const char c : sOther) {
            std::string sChanged = sText;
            sChanged[i] = c;
            vCompare(sChanged);
            vCompare(sText.substr(0, i) + c + sText.substr(i));
        }
    }
    EXPECT_GT(iTaken, sText.size() * 10);
}

struct FaultRow {
    const char* sRule;
    std::string sText;
    const char* sFault;
};
const FaultRow g_faultRows[] = {
    {"nothing", "", "No root element"},
    {"blanks", " \n", "No root element"},
    {"no element", "<?xml version='1.0'?><!-- -->", "No root element"},
    {"text alone", "abc", "Text outside the root element"},
    {"text in front", "abc<a/>", "Text outside the root element"},
    {"text behind", "<a/>abc", "Text outside the root element"},
    {"two elements", "<a/><b/>", "More than one root element"},
    {"an attribute twice", "<a x='1' x='2'/>", "An attribute twice"},
    {"a tag in an attribute", "<a x='<b/>'/>", "A tag inside an attribute"},
    {"a name with a sign", "<a\xC3\x97/>", "Not a name"},
    {"an attribute's name with a sign", "<a b\xC3\x97='1'/>", "Not a name"},
    {"bytes that are no UTF-8", "<a>\xFF</a>", "A character that XML can't hold"},
    {"overlong UTF-8", "<a x='\xC0\xAF'/>", "A character that XML can't hold"},
    {"a control character", "<a>\x01</a>", "A character that XML can't hold"},
    {"a 0 byte behind the document", std::string("<a/>\0<b/>", 9), "A character that XML can't hold"},
    {"one in a section", "<a><![CDATA[\x02]]></a>", "A character that XML can't hold"},
    {"U+FFFF", "<a>\xEF\xBF\xBF</a>", "A character that XML can't hold"},
    {"a 0 by number", "<a>b&#0;c</a>", "A reference to nothing"},
    {"a surrogate by number", "<a>&#xD800;</a>", "A reference to nothing"},
    {"the last of them", "<a>&#xDFFF;</a>", "A reference to nothing"},
    {"no character of XML", "<a>&#xFFFE;</a>", "A reference to nothing"},
    {"nor the next one", "<a>&#xFFFF;</a>", "A reference to nothing"},
    {"text behind a number", "<a>&#65x;</a>", "A reference to nothing"},
    {"no end of an entity", "<a>b &amp</a>", "A reference to nothing"},
    {"text behind a hexadecimal number", "<a>&#x42g;</a>", "A reference to nothing"},
    {"beyond all characters", "<a>&#x110000;</a>", "A reference to nothing"},
    {"beyond all numbers", "<a>&#99999999999999999999;</a>", "A reference to nothing"},
    {"no number", "<a>&#x;</a>", "A reference to nothing"},
    {"a lone ampersand", "<a>b & c; d</a>", "A reference to nothing"},
    {"an ampersand at the end", "<a x='b&'/>", "A reference to nothing"},
};

TEST(XmlParse, RefusesWhatIsNotWellFormed) {
    for (const FaultRow& row : g_faultRows) {
        SCOPED_TRACE(row.sRule);
        Faults faults;
        TestFile file;
        EXPECT_FALSE(file.parseText(row.sText, &faults));
        EXPECT_FALSE(file.RootElementGet());
        EXPECT_THAT(faults.m_texts, ElementsAre(row.sFault));
        EXPECT_THAT(faults.m_sources, ElementsAre("text"));
    }
    for (const char* sText : {"<a>", "<a></b>", "<a", "<a x=1/>", "<a x/>", "</a>", "<a><b></a></b>", "<a/",
                              "<!DOCTYPE", "<a><![CDATA[x", "<a><!-- x", "<?xml", "<1/>", "<a x='1></a>"}) {
        SCOPED_TRACE(sText);
        Faults faults;
        TestFile file(&faults);
        EXPECT_FALSE(file.parseText(sText));
        EXPECT_EQ(faults.m_texts.size(), 1U);
    }
}

TEST(XmlParse, RefusesEveryPrefix) {
    const std::string sText =
        "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY e 'x'>]><a x='1 &amp; 2'><b>t&#65;</b><!-- c -->"
        "<![CDATA[d]]><c y=\"\xC3\x9F\"/></a>";
    TestFile file;
    for (std::size_t i = 0; i < sText.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_FALSE(file.parseText(sText.substr(0, i)));
        EXPECT_FALSE(file.RootElementGet());
    }
    EXPECT_TRUE(file.parseText(sText));
}

std::string sNested(std::size_t iLevels) {
    std::string sText;
    for (std::size_t i = 0; i < iLevels; ++i) sText += "<a>";
    for (std::size_t i = 0; i < iLevels; ++i) sText += "</a>";
    return sText;
}

TEST(XmlParse, BoundsTheDepth) {
    Faults faults;
    TestFile file(&faults);
    EXPECT_TRUE(file.parseText(sNested(File::g_iDepthLimit)));
    EXPECT_TRUE(file.parseText("<a>" + sNested(File::g_iDepthLimit - 1) + "text<b/></a>"));
    EXPECT_THAT(faults.m_texts, ElementsAre());
    EXPECT_FALSE(file.parseText(sNested(File::g_iDepthLimit + 1)));
    EXPECT_FALSE(file.parseText(sNested(1'000'000)));
    EXPECT_THAT(faults.m_texts, ElementsAre("Elements nested too deep", "Elements nested too deep"));
}

TEST(XmlParse, TakesManyAttributes) {
    std::string sText = "<a";
    for (int i = 0; i < 100'000; ++i) sText += " x" + std::to_string(i) + "='1'";
    TestFile file;
    ASSERT_TRUE(file.parseText(sText + "/>"));
    EXPECT_EQ(file.RootElementGet()->AttributesGet().LengthGet(), 100'000U);
    EXPECT_FALSE(file.parseText(sText + " x7='2'/>"));
}

TEST(XmlParse, NeedsAReadableSource) {
    const std::filesystem::path folder = testing::TempDir();
    Faults faults;
    TestFile file(&faults);
    ASSERT_TRUE(file.parseText("<a/>"));
    EXPECT_FALSE(file.parse(folder / "no such file.xml", nullptr));
    EXPECT_FALSE(file.RootElementGet()) << "the former document is gone";
    EXPECT_FALSE(file.parse(folder, nullptr));
    std::istringstream failed("<a/>");
    failed.setstate(std::ios::badbit);
    EXPECT_FALSE(file.parse(failed, "failed", nullptr));
    EXPECT_THAT(faults.m_texts, ElementsAre("Can't be read", "Can't be read", "Can't be read"));
    EXPECT_EQ(faults.m_sources.back(), "failed");
}

TEST(XmlNode, FindsWhatIsThere) {
    TestFile file;
    const const_Element root = file.parseText("<a x='1'><b><c n='1'/></b>t<c n='2'/></a>").value();
    EXPECT_EQ(root.AttributeNodeGet("x")->getValue(), "1");
    EXPECT_EQ(root.AttributeNodeGet("x")->getNodeName(), "x");
    EXPECT_FALSE(root.AttributeNodeGet("y"));
    EXPECT_EQ(root.ElementByTagNameGet("c")->AttributeNodeGet("n")->getValue(), "1") << "in document order";
    EXPECT_FALSE(root.ElementByTagNameGet("a")) << "below the element only";
    EXPECT_EQ(root.getNodeValue(), "");
    const const_Node b = root.FirstChildGet().value();
    EXPECT_EQ(b.getNodeName(), "b");
    const const_Node text = b.NextSiblingGet().value();
    EXPECT_EQ(text.getNodeName(), "");
    EXPECT_EQ(text.getNodeValue(), "t");
    EXPECT_FALSE(const_Element::toWrapper(text));
    EXPECT_FALSE(text.NextSiblingGet()->NextSiblingGet());
}

TEST(XmlNode, TellsElementsFromAttributes) {
    TestFile file;
    const const_Element root = file.parseText("<a x='1'/>").value();
    const const_Node attribute = root.AttributesGet().ItemGet(0);
    EXPECT_TRUE(const_Attr::toWrapper(attribute));
    EXPECT_FALSE(const_Element::toWrapper(attribute));
    EXPECT_FALSE(const_Attr::toWrapper(root));
    EXPECT_TRUE(const_Element::toWrapper(root));
    EXPECT_FALSE(attribute.boHasChildNodes());
    EXPECT_FALSE(attribute.FirstChildGet());
    EXPECT_FALSE(attribute.NextSiblingGet());
    EXPECT_EQ(attribute.AttributesGet().LengthGet(), 0U);
}

TEST(XmlNode, AnswersEmptyForNothing) {
    Element nothing;
    EXPECT_EQ(nothing.getNodeName(), "");
    EXPECT_EQ(nothing.getNodeValue(), "");
    EXPECT_FALSE(nothing.ChildNodesGet().getFirstItem());
    EXPECT_FALSE(nothing.NextSiblingGet());
    EXPECT_FALSE(nothing.AttributeNodeGet("x"));
    EXPECT_FALSE(nothing.ElementByTagNameGet("x"));
    EXPECT_EQ(nothing.AttributesGet().LengthGet(), 0U);
    EXPECT_FALSE(const_Element::toWrapper(nothing));
    EXPECT_FALSE(const_Attr::toWrapper(nothing));
    nothing.vAttributeSet("x", "1");
    EXPECT_FALSE(nothing.boTextNodeAppend("t"));
    EXPECT_EQ(nothing.ElementNodeAppend("b").getNodeName(), "");
    EXPECT_FALSE(nothing.RemoveChild(nothing));
}

TEST(XmlNode, HasTheTextsOfXmlSchema) {
    EXPECT_EQ(const_Node::to_string(true), "true");
    EXPECT_EQ(const_Node::to_string(false), "false");
    EXPECT_EQ(const_Node::to_string(-9223372036854775807LL - 1), "-9223372036854775808");
}

TEST(XmlCreate, BuildsADocument) {
    TestFile file;
    EXPECT_EQ(file.sSaved(), "not saved") << "nothing to be saved";
    Element root = file.create("a", "urn:x", true).value();
    root.vAttributeSet("y", "1");
    root.vAttributeSet("z", "2");
    root.vAttributeSet("y", "3");
    Element child = root.ElementNodeAppend("b");
    EXPECT_TRUE(child.boTextNodeAppend("t"));
    root.ElementNodeAppend("c");
    EXPECT_EQ(sShow(root), "a[xmlns=urn:x][y=3][z=2](b('t') c)");
    EXPECT_EQ(file.sSaved(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<a xmlns=\"urn:x\" y=\"3\" z=\"2\">\n  <b>t</b>\n  <c/>\n</a>\n");
}

TEST(XmlCreate, ChangesAttributesWhereTheyStand) {
    TestFile file;
    Element root = file.create("a", "", true).value();
    root.vAttributeSet("x", "");
    root.vAttributeSet("y", "short");
    const const_Attr x = root.AttributeNodeGet("x").value();
    const std::string sLong(1'000'000, 'l');
    root.vAttributeSet("x", sLong);
    EXPECT_EQ(x.getValue(), sLong);
    root.vAttributeSet("x", x.getValue().substr(0, 2));
    root.vAttributeSet("z", root.AttributeNodeGet("y")->getValue());
    EXPECT_EQ(sShow(root), "a[x=ll][y=short][z=short]");
    for (std::size_t i = 0; i < 20; ++i) root.vAttributeSet("n" + std::to_string(i), std::to_string(i));
    const const_NamedNodeMap map = root.AttributesGet();
    EXPECT_EQ(map.LengthGet(), 23U);
    EXPECT_EQ(map.ItemGet(22).getNodeName(), "n19");
    EXPECT_THROW(static_cast<void>(map.ItemGet(23)), std::out_of_range);
    EXPECT_THROW(static_cast<void>(root.FirstChildGet().value_or(const_Node()).AttributesGet().ItemGet(0)),
                 std::out_of_range);
}

TEST(XmlCreate, ReplacesOnlyWhenAsked) {
    TestFile file;
    ASSERT_TRUE(file.create("a", "", false));
    EXPECT_FALSE(file.create("b", "", false));
    EXPECT_EQ(sShow(*file.RootElementGet()), "a");
    EXPECT_TRUE(file.create("b", "", true));
    EXPECT_EQ(sShow(*file.RootElementGet()), "b");
}

TEST(XmlCreate, RemovesAChildWithAllInIt) {
    TestFile file;
    Element root = file.create("a", "", true).value();
    const Element b = root.ElementNodeAppend("b");
    Element c = root.ElementNodeAppend("c");
    const Element d = c.ElementNodeAppend("d");
    c.ElementNodeAppend("e").boTextNodeAppend("t");
    EXPECT_FALSE(root.RemoveChild(d)) << "no child of this element";
    EXPECT_FALSE(root.RemoveChild(root));
    EXPECT_TRUE(root.RemoveChild(c));
    EXPECT_EQ(sShow(root), "a(b)");
    EXPECT_TRUE(root.RemoveChild(b));
    EXPECT_FALSE(root.boHasChildNodes());
    EXPECT_FALSE(root.RemoveChild(b)) << "a second time";
    for (const char* sName : {"f", "g", "h", "i"}) root.ElementNodeAppend(sName);
    EXPECT_TRUE(root.RemoveChild(*root.FirstChildGet()->NextSiblingGet()));
    EXPECT_EQ(sShow(root), "a(f h i)");
    EXPECT_TRUE(root.RemoveChild(*root.ElementByTagNameGet("i")));
    root.ElementNodeAppend("j");
    EXPECT_EQ(sShow(root), "a(f h j)");
    EXPECT_TRUE(root.RemoveChild(*root.FirstChildGet()));
    EXPECT_EQ(sShow(root), "a(h j)");
    TestFile other;
    Element foreign = other.create("a", "", true).value();
    foreign.ElementNodeAppend("b");
    EXPECT_FALSE(root.RemoveChild(*foreign.FirstChildGet()));
}

TEST(XmlCreate, TakesNamesOfXmlOnly) {
    const AssertLog log;
    TestFile file;
    EXPECT_FALSE(file.create("a b", "", true));
    Element root = file.create("a", "", true).value();
    std::vector<std::string> texts;
    for (const char* sName : {"", "1", "-wrapper", ".a", "a b", "a<", "a\xFF", "\xC3\x97", "a\"", "a=", "a/"}) {
        SCOPED_TRACE(sName);
        EXPECT_EQ(root.ElementNodeAppend(sName).getNodeName(), "");
        root.vAttributeSet(sName, "1");
    }
    EXPECT_EQ(sShow(root), "a");
    EXPECT_EQ(log.texts(), std::vector<std::string>(23, "No name of XML"));
    for (const char* sName : {"IfcLabel-wrapper", "_", "a1.", "xsi:nil", "\xC3\x84", "a\xC2\xB7"})
        EXPECT_EQ(root.ElementNodeAppend(sName).getNodeName(), sName);
}

struct TextRow {
    const char* sRule;
    std::string sText;
    const char* sInElement;
    const char* sInAttribute;
    const char* sParsed;   // null: as it was
};
const TextRow g_textRows[] = {
    {"plain", "abc", "abc", "abc", nullptr},
    {"empty", "", "", "", nullptr},
    {"markup", "<a & 'b'>", "&lt;a &amp; 'b'&gt;", "&lt;a &amp; 'b'&gt;", nullptr},
    {"end of a section", "]]>", "]]&gt;", "]]&gt;", nullptr},
    {"quotes", "\"", "\"", "&quot;", nullptr},
    {"what looks like a reference", "&lt;", "&amp;lt;", "&amp;lt;", nullptr},
    {"tab and line end", "\t\n", "\t\n", "&#9;&#10;", nullptr},
    {"CR", "a\r\nb\rc", "a&#13;\nb&#13;c", "a&#13;&#10;b&#13;c", nullptr},
    {"blanks", " a  b ", " a  b ", " a  b ", nullptr},
    {"beyond ASCII", "\xC3\x9F\xE2\x82\xAC\xF0\x9F\x8F\xA0", "\xC3\x9F\xE2\x82\xAC\xF0\x9F\x8F\xA0",
     "\xC3\x9F\xE2\x82\xAC\xF0\x9F\x8F\xA0", nullptr},
    {"U+EFFF and U+FFFD", "\xEE\xBF\xBF\xEF\xBF\xBD", "\xEE\xBF\xBF\xEF\xBF\xBD", "\xEE\xBF\xBF\xEF\xBF\xBD", nullptr},
    {"control characters",
     "a\x01\x1F"
     "b",
     "a\xEF\xBF\xBD\xEF\xBF\xBD"
     "b",
     "a\xEF\xBF\xBD\xEF\xBF\xBD"
     "b",
     "a\xEF\xBF\xBD\xEF\xBF\xBD"
     "b"},
    {"a 0 byte", std::string("a\0b", 3),
     "a\xEF\xBF\xBD"
     "b",
     "a\xEF\xBF\xBD"
     "b",
     "a\xEF\xBF\xBD"
     "b"},
    {"U+FFFE and U+FFFF", "\xEF\xBF\xBE\xEF\xBF\xBF.", "\xEF\xBF\xBD\xEF\xBF\xBD.", "\xEF\xBF\xBD\xEF\xBF\xBD.",
     "\xEF\xBF\xBD\xEF\xBF\xBD."},
    {"no UTF-8", "a\xFFz", "a\xEF\xBF\xBDz", "a\xEF\xBF\xBDz", "a\xEF\xBF\xBDz"},
    {"cut UTF-8", "a\xE2\x82", "a\xEF\xBF\xBD", "a\xEF\xBF\xBD", "a\xEF\xBF\xBD"},
};

TEST(XmlSave, WritesTextsThatReadBack) {
    for (const TextRow& row : g_textRows) {
        SCOPED_TRACE(row.sRule);
        TestFile file;
        Element root = file.create("a", "", true).value();
        root.vAttributeSet("x", row.sText);
        root.ElementNodeAppend("b").boTextNodeAppend(row.sText);
        EXPECT_EQ(file.sSaved(), std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a x=\"") + row.sInAttribute +
                                     "\">\n  <b>" + row.sInElement + "</b>\n</a>\n");
        TestFile again;
        const const_Element read = again.parseText(file.sSaved()).value();
        const std::string sParsed = row.sParsed ? row.sParsed : row.sText;
        EXPECT_EQ(read.AttributeNodeGet("x")->getValue(), sParsed);
        const std::optional<const_Node> text = read.FirstChildGet()->FirstChildGet();
        EXPECT_EQ(text ? text->getNodeValue() : "", sParsed);
    }
}

TEST(XmlSave, IndentsWhereThatChangesNoText) {
    TestFile file;
    ASSERT_TRUE(file.parseText("<a><b><c/></b><d>t<e/><f><g/></f></d></a>"));
    EXPECT_EQ(file.sSaved(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<a>\n  <b>\n    <c/>\n  </b>\n  <d>t<e/><f>\n      <g/>\n    </f></d>\n</a>\n");
    TestFile again;
    EXPECT_EQ(sShow(again.parseText(file.sSaved()).value()), sShow(*file.RootElementGet()));
}

TEST(XmlSave, GoesAsDeepAsTheDocument) {
    constexpr std::size_t g_iLevels = 100'000;
    TestFile file;
    Element root = file.create("a", "", true).value();
    Element element = root;
    for (std::size_t i = 1; i < g_iLevels; ++i) element = element.ElementNodeAppend("a");
    const std::string sSaved = file.sSaved();
    EXPECT_LT(sSaved.size(), g_iLevels * 140) << "grows with the levels, not with their square";
    EXPECT_EQ(std::ranges::count(sSaved, '<'), 2 * g_iLevels);
    EXPECT_FALSE(root.ElementByTagNameGet("b"));
    TestFile again;
    EXPECT_FALSE(again.parseText(sSaved)) << "beyond the bound of what is parsed";
    EXPECT_TRUE(root.RemoveChild(*root.FirstChildGet()));
    EXPECT_EQ(sShow(root), "a");
}

// Takes so many bytes and no more.
class SmallBuffer : public std::streambuf {
public:
    explicit SmallBuffer(std::streamsize iRoom) : m_iRoom(iRoom) {}

protected:
    int overflow(int c) override { return m_iRoom-- > 0 ? c : traits_type::eof(); }
    std::streamsize xsputn(const char*, std::streamsize iCount) override {
        const std::streamsize iTaken = std::min(iCount, m_iRoom);
        m_iRoom -= iTaken;
        return iTaken;
    }

private:
    std::streamsize m_iRoom;
};

TEST(XmlSave, TellsOfAStreamThatFails) {
    TestFile file;
    ASSERT_TRUE(file.parseText("<a>" + std::string(50'000, 'x') + "</a>"));
    for (const std::streamsize iRoom : {0, 1, 20'000, 50'040}) {
        for (const bool boThrows : {false, true}) {
            SCOPED_TRACE(iRoom);
            SmallBuffer buffer(iRoom);
            std::ostream out(&buffer);
            if (boThrows) out.exceptions(std::ios::badbit);
            Faults faults;
            EXPECT_FALSE(file.save(out, &faults, Encoding::Utf8, LineEnding::Lf));
            EXPECT_THAT(faults.m_texts, ElementsAre("Can't be written"));
        }
    }
    SmallBuffer enough(60'000);
    std::ostream out(&enough);
    EXPECT_TRUE(file.save(out, nullptr, Encoding::Utf8, LineEnding::Lf));
}

TEST(XmlSave, WritesAFile) {
    const std::filesystem::path path =
        std::filesystem::path(testing::TempDir()) / std::filesystem::path(u8"oxa xml \u00DF.xml");
    TestFile file;
    std::error_code error;
    EXPECT_FALSE(file.save(path, nullptr, &error, Encoding::Utf8, LineEnding::Lf));
    EXPECT_EQ(error, std::errc::invalid_argument) << "no root";
    ASSERT_TRUE(file.create("a", "", true));
    EXPECT_TRUE(file.save(path, nullptr, &error, Encoding::Utf8, LineEnding::Lf));
    EXPECT_FALSE(error);
    TestFile again;
    ASSERT_TRUE(again.parse(path, nullptr));
    EXPECT_EQ(sShow(*again.RootElementGet()), "a");
    std::filesystem::remove(path);

    Faults faults;
    EXPECT_FALSE(file.save(path / "in no folder", &faults, &error, Encoding::Utf8, LineEnding::Lf));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_THAT(faults.m_texts, ElementsAre("Can't be written"));
    EXPECT_FALSE(file.save(path / "in no folder", nullptr, nullptr, Encoding::Utf8, LineEnding::Lf));
}

TEST(XmlSave, LeavesAFileThatItHasNothingFor) {
    const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "oxa-kept.xml";
    std::ofstream(path) << "kept";
    const TestFile file;
    EXPECT_FALSE(file.save(path, nullptr, nullptr, Encoding::Utf8, LineEnding::Lf));
    std::ifstream in(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "kept");
    in.close();   // some systems remove no open file
    std::filesystem::remove(path);
}

}   // namespace
}   // namespace oxa::xml
