// SPDX-License-Identifier: Apache-2.0
/// @file
/// Xml: documents as a tree of elements (XML 1.0), made and saved, or parsed and walked.
///
/// For      the ifcXML export and import.
/// Not for  validation, namespaces, queries. No file but the named one is ever opened: nothing is fetched, a document
///          type is skipped, and its entities are not expanded. Comments and instructions are not kept.
/// Owner    a File owns its document. All other classes are handles of a pointer or two, good while it lives and
///          while their node is not removed; a handle of nothing may be asked anything, and all of it is empty.
/// Texts    UTF-8. A tag name is compared as it stands in the document, with its prefix.
/// Threads  one at a time for each document, handles included.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/Export.h"

/// XML documents as trees.
namespace oxa::xml {

/// What is printed: nothing; faults go to the ExceptionInterface.
enum class VerboseLevel : int { Default = -1 };
/// What a document is checked against: it must be well-formed, and no schema is asked.
enum class ValidateLevel : int { Default = -1 };
/// How a document is saved.
enum class Encoding : int { Utf8 = 0 };
/// How lines of a saved document end.
enum class LineEnding : int { Lf = 0 };

/// Hears why a document can't be parsed or saved.
class OXA_PLATFORM_API ExceptionInterface {
public:
    virtual ~ExceptionInterface();
    /// One fault.
    ///
    /// @param sSource  the path, or the name that the caller gave to the stream
    /// @param iOffset  the byte where it was noticed; 0 where that says nothing
    virtual void vFault(std::string_view sSource, std::string_view sText, std::size_t iOffset) = 0;
};

class const_NamedNodeMap;
class const_NodeList;

namespace details {
struct Document;
}   // namespace details

/// An element, a text, or an attribute.
class OXA_PLATFORM_API const_Node {
public:
    const_Node() noexcept = default;

    /// A tag or attribute name; empty for a text.
    [[nodiscard]] std::string_view getNodeName() const noexcept;
    /// Of a text or an attribute; empty for an element. Without references, line ends are LF.
    [[nodiscard]] std::string_view getNodeValue() const noexcept;

    /// Elements and texts in document order; an attribute has none. White space alone is a text only where it is
    /// all that an element holds.
    [[nodiscard]] const_NodeList ChildNodesGet() const noexcept;

    ///@{
    /// An element or text, as ChildNodesGet() counts them; empty where there is none.
    [[nodiscard]] std::optional<const_Node> FirstChildGet() const noexcept;
    [[nodiscard]] std::optional<const_Node> NextSiblingGet() const noexcept;
    ///@}

    /// Whether ChildNodesGet() has any.
    [[nodiscard]] bool boHasChildNodes() const noexcept;
    /// The attributes of an element; empty for all else.
    [[nodiscard]] const_NamedNodeMap AttributesGet() const;

    ///@{
    /// "true" and "false"; decimal (XML Schema, part 2).
    [[nodiscard]] static std::string to_string(bool boValue);
    [[nodiscard]] static std::string to_string(long long iValue);
    ///@}

protected:
    friend class const_Attr;
    friend class const_Element;
    friend class const_NodeList;
    friend class File;
    /// Of that node or attribute of the document.
    const_Node(details::Document* pDocument, std::uint32_t uNode, std::uint32_t uAttribute) noexcept
        : m_pDocument(pDocument),
          m_uNode(uNode),
          m_uAttribute(uAttribute) {}

    ///@{
    /// The document, and where in it node and attribute are; one of them is 0. All three are for a handle of nothing.
    details::Document* m_pDocument = nullptr;
    std::uint32_t m_uNode = 0;
    std::uint32_t m_uAttribute = 0;
    ///@}
};

/// An attribute of an element.
class OXA_PLATFORM_API const_Attr : public const_Node {
public:
    const_Attr() noexcept = default;

    /// Empty when the node is none.
    [[nodiscard]] static std::optional<const_Attr> toWrapper(const const_Node& node) noexcept;
    /// The text between the quotes, without references.
    [[nodiscard]] std::string_view getValue() const noexcept { return getNodeValue(); }

private:
    friend class const_Element;
    friend class const_Node;
    const_Attr(details::Document* pDocument, std::uint32_t uAttribute) noexcept
        : const_Node(pDocument, 0, uAttribute) {}
};

/// The children of a node.
class OXA_PLATFORM_API const_NodeList {
public:
    /// The others follow through const_Node::NextSiblingGet.
    [[nodiscard]] std::optional<const_Node> getFirstItem() const noexcept;

private:
    friend class const_Node;
    const_NodeList(details::Document* pDocument, std::uint32_t uFirst) noexcept
        : m_pDocument(pDocument),
          m_uFirst(uFirst) {}
    details::Document* m_pDocument;
    std::uint32_t m_uFirst;
};

/// The attributes of an element, in document order. A copy of handles: one that is added later is not in it.
class OXA_PLATFORM_API const_NamedNodeMap {
public:
    /// How many there are.
    [[nodiscard]] std::size_t LengthGet() const noexcept { return m_iCount; }
    /// By place, from 0. Throws std::out_of_range beyond the last.
    [[nodiscard]] const const_Attr& ItemGet(std::size_t iItem) const {
        return iItem < (std::min)(m_iCount, m_few.size()) ? m_few[iItem] : m_more.at(iItem - m_few.size());
    }

private:
    friend class const_Node;
    std::size_t m_iCount = 0;
    std::array<const_Attr, 8> m_few;   // in document order: elements mostly have few, which take no memory here
    std::vector<const_Attr> m_more;
};

/// An element, to be read.
class OXA_PLATFORM_API const_Element : public const_Node {
public:
    const_Element() noexcept = default;

    /// Empty when the node is none.
    [[nodiscard]] static std::optional<const_Element> toWrapper(const const_Node& node) noexcept;
    /// The attribute of that name; empty where there is none.
    [[nodiscard]] std::optional<const_Attr> AttributeNodeGet(std::string_view name) const noexcept;
    /// The first of that name below this element, however deep, in document order.
    [[nodiscard]] std::optional<const_Element> ElementByTagNameGet(std::string_view name) const noexcept;

protected:
    friend class File;
    /// Of that node of the document.
    const_Element(details::Document* pDocument, std::uint32_t uNode) noexcept : const_Node(pDocument, uNode, 0) {}
};

class Element;

/// The operations that change a document. A name must be an XML name; one that is none raises an assertion, and
/// nothing is done.
class OXA_PLATFORM_API Node : public const_Element {
public:
    Node() noexcept = default;

    /// A new last child.
    Element ElementNodeAppend(std::string_view name);
    /// Appends a text, also an empty one. False where there is no element to take it.
    bool boTextNodeAppend(std::string_view text);
    /// Removes the child with everything in it. False when it is no child of this element.
    bool RemoveChild(const const_Node& child);

protected:
    /// As those of const_Element.
    using const_Element::const_Element;
};

/// An element, to be changed.
class OXA_PLATFORM_API Element : public Node {
public:
    Element() noexcept = default;

    /// Sets an attribute; a new one is the last.
    void vAttributeSet(std::string_view name, std::string_view value);

private:
    friend class File;
    friend class Node;
    using Node::Node;
};

/// A document, with its owner. It starts without a root.
class OXA_PLATFORM_API File {
public:
    /// Elements nest at most so deep in a document that is parsed, so that a walk over it may recurse.
    static constexpr std::size_t g_iDepthLimit = 1000;
    /// Bytes that are parsed at most; with the tree they take two to four times as much memory.
    static constexpr std::size_t g_iSizeLimit = std::size_t{1} << 32;

    /// Without a root.
    ///
    /// @param pExceptions  hears of faults where a call names nobody else; may be null, not owned
    File(ExceptionInterface* pExceptions, VerboseLevel eVerbose, ValidateLevel eValidate);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Gives the document a root element.
    ///
    /// @param name          of the root
    /// @param namespaceUri  its default namespace; empty for none
    /// @param boReplace     a document that was there goes; else the result is then empty
    /// @returns the root; empty for a name that is none
    std::optional<Element> create(std::string_view name, std::string_view namespaceUri, bool boReplace);
    /// Empty where the document has none.
    [[nodiscard]] std::optional<const_Element> RootElementGet() const noexcept;
    /// The byte of what was parsed where the name of an element's tag begins. Empty for an element that was made, and
    /// where the bytes were not UTF-8.
    [[nodiscard]] std::optional<std::size_t> OffsetGet(const const_Element& element) const noexcept;

    ///@{
    /// Reads a document in place of the one that was there.
    ///
    /// The input is UTF-8 unless a byte order mark or its first bytes say UTF-16, UTF-32 or ISO 8859-1. A reference
    /// to an entity that XML itself does not have stays in the text as it is written.
    /// @returns the root; empty, with no document, where the input can't be read, is no well-formed document, or
    ///          exceeds a limit
    std::optional<const_Element> parse(const std::filesystem::path& path, ExceptionInterface* pExceptions);
    std::optional<const_Element> parse(std::istream& in, std::string_view sName, ExceptionInterface* pExceptions);
    ///@}

    ///@{
    /// Writes the document, indented where that changes no text. A character that XML can't hold is written as
    /// U+FFFD, as is what is no UTF-8: what was written can be parsed. The system's reason for a failure goes to
    /// "pError", which may be null.
    ///
    /// @returns false without a root, and when a part could not be written
    bool save(const std::filesystem::path& path, ExceptionInterface* pExceptions, std::error_code* pError,
              Encoding eEncoding, LineEnding eLineEnding) const;
    bool save(std::ostream& out, ExceptionInterface* pExceptions, Encoding eEncoding, LineEnding eLineEnding) const;
    ///@}

private:
    std::optional<const_Element> parsed(std::istream& in, std::string_view sName, ExceptionInterface* pExceptions);
    [[nodiscard]] bool boSaved(std::ostream& out) const;
    void vFault(ExceptionInterface* pExceptions, std::string_view sSource, std::string_view sText,
                std::size_t iOffset) const;

    ExceptionInterface* m_pExceptions;
    std::unique_ptr<details::Document> m_pDocument;
};

}   // namespace oxa::xml
