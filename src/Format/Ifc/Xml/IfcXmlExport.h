// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcXmlExport: a model as an ifcXML document (ISO 10303-28, the configuration published for IFC4 ADD2).
///
///     <ifcXML xmlns="..." id="ifcXML4">
///       <header><name/>...</header>
///       <IfcProject id="i1" GlobalId="..." Name="..."> ... </IfcProject>
///       one element an instance, in the order of the walk
///     </ifcXML>
///
/// The walk starts at the project and follows references and inverse relations. What nothing leads to is left out,
/// without a word unless a report is asked for. An instance stands in full where the walk meets it first,
/// `<IfcWall id="i12" ...>`; all later places have an empty element, `<IfcWall ref="i12" xsi:nil="true"/>`.
///
/// Modes: how an attribute is written, its mapping record says, else the schema's defaults, else mode 2.
///
///     1  a reference is a nested element        2  a value is an XML attribute, a reference one with the id
///     3  as 2 for references                    any other: a value is an element, a reference nothing
///
/// An inverse attribute: 0 leads the walk on, 1 has an element an instance, any other one element around all.
///
/// - Usage: construct, boExportHeader, boExportData, boSave.
/// - Threads: one at a time for each object; the model must not change meanwhile.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::xml {
class Element;
class File;
}   // namespace oxa::xml

namespace oxa::ifc {
class AttributeBase;
class AttributeListValueBase;
class AttributeSelect;
class Data;
class Entity;
class Errors;
class FileHeaderBase;
}   // namespace oxa::ifc

namespace oxa::ifc::xml {

/// The document of an export, and how instances and values come into it.
class OXA_IFC_API ExportCommon {
public:
    ExportCommon();
    ~ExportCommon();
    ExportCommon(const ExportCommon&) = delete;
    ExportCommon& operator=(const ExportCommon&) = delete;

    ///@{
    /// Writes the document, in UTF-8 with LF; the path is UTF-8 too. False when it can't be written, or is empty.
    bool boSave(const std::string& path) const;
    bool boSave(std::ostream& out) const;
    ///@}

protected:
    struct Walk;       // the instances to come; IfcXmlExportWalk.h
    struct Step;       // one attribute of a type
    struct Exported;   // a set of instances

    /// An element for the instance below "parent", named after its type unless there is a name; the walk fills it
    /// later, in its turn. pDeclared: the type that a reader expects there, null for any. Throws MissingType
    /// for an instance without a type.
    void vExportEntity(oxa::xml::Element& parent, const Entity& entity, const def::schema::Entity* pDeclared,
                       std::string_view name, Walk& walk);

    /// One attribute of an instance whose element is "parent".
    void vExportAttribute(oxa::xml::Element& parent, const Step& step, const AttributeBase& cell, Walk& walk);
    /// Where the walk asks for it: notes the instances that a cell leads to which the mapping leaves out.
    void vLeftOutNote(const Step& step, const AttributeBase& cell, Walk& walk) const;
    /// A reference as its mode says: an element, an XML attribute with the id, or nothing.
    void vExportReference(oxa::xml::Element& parent, const def::schema::Attribute& attribute, const Entity* pEntity,
                          std::uint32_t mode, Walk& walk);
    /// A value that is neither reference nor aggregate nor select: an XML attribute in mode 2, else an element; nothing
    /// without a text.
    void vExportScalar(oxa::xml::Element& parent, const def::schema::Attribute& attribute, const AttributeBase& cell,
                       std::uint32_t mode, Walk& walk);
    /// The value gets an element named after the attribute; an item of a list (boInList) stands in that of its list.
    void vExportSelect(oxa::xml::Element& parent, const AttributeSelect& cell, const def::schema::Attribute& attribute,
                       bool boInList, std::uint32_t mode, Walk& walk);
    /// An aggregate: reals and texts as one XML attribute, selects and instances in an element around them, others not
    /// at all.
    void vExportList(oxa::xml::Element& parent, const AttributeListValueBase& cell,
                     const def::schema::Attribute& attribute, std::uint32_t mode, Walk& walk);

    std::unique_ptr<oxa::xml::File> m_pFile;                    ///< the document; never null
    std::unique_ptr<oxa::xml::Element> m_pRootElement;          ///< of the document; null when it could not be created
    const def::xmlschema::Defaults* m_pXmlDefaults = nullptr;   ///< of the schema; null before boExportData
    std::unique_ptr<Exported> m_pExported;                      ///< instances that have their full element
};

/// The export of a model.
class OXA_IFC_API Export : public ExportCommon {
public:
    Export();

    /// The root's attributes, and the header element for a FileHeader. False for a schema that is not exactly "IFC4".
    bool boExportHeader(const FileHeaderBase& header);

    /// All that the project leads to. A second call writes only references to what the first one wrote.
    ///
    /// @param progress  may be empty; gets 1, 2, 3, ... for the instances that are taken from the queue. How many there
    ///   will be is not known.
    /// @return false without a project
    /// @throws MissingType where the model refers to an instance that no statement defined
    bool boExportData(const Data& data, std::function<void(unsigned int)> progress);

    /// The same, and no instance is lost in silence. One that is named only by attributes which the mapping leaves out
    /// follows at the end of the document: the element of the inverse relation, which stands there, leads back. And
    /// "report" gets a record for each instance of the data that is not in the document, in the order of entities():
    ///
    ///     Error_EntityNotConnected  Reference  the project leads to it over no reference and no inverse relation
    ///     Error_EntityWithoutForm   Value      all that leads to it are values without a form here, as lists of lists
    bool boExportData(const Data& data, Errors& report, std::function<void(unsigned int)> progress);

private:
    bool boExportWalk(const Data& data, Walk& walk, const std::function<void(unsigned int)>& progress);
    static void vQueueLeftOut(Walk& walk);
    void vLeftOutReport(const Data& data, Errors& report) const;
    void vExportQueued(Walk& walk);
    void vExportInstance(Walk& walk);
    void vExportStep(Walk& walk);
    void vExportInverse(oxa::xml::Element& element, const Entity& entity, const Step& step, Walk& walk);
};

}   // namespace oxa::ifc::xml
