// SPDX-License-Identifier: Apache-2.0
// Properties by the words of a user. The model's operation sets them; here texts become values of the kind that stands
// there, a group of elements for each kind.
#include "Convert/Assignment.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcNumbers.h"
#include "Model/Relations.h"
#include "Model/SetProperty.h"
#include "platform/String.h"
#include "schema/Schema.h"

namespace oxa::convert {

namespace schema = ifc::def::schema;
using schema::DataKind;

namespace {

// What a query asks of an element and nobody can set there.
constexpr std::string_view g_asked[] = {"class",  "id",       "type",     "container",      "storey", "building",
                                        "parent", "location", "material", "classification", "group"};

struct Refused {
    Refusal refusal;
};

std::string_view trimmed(std::string_view text) {
    const std::size_t iFirst = text.find_first_not_of(" \t");
    if (iFirst == std::string_view::npos) return {};
    return text.substr(iFirst, text.find_last_not_of(" \t") - iFirst + 1);
}

// Takes a name off the text: a quoted one, with \ before a quote or a \ in it, or what stands up to one of the ends.
std::optional<std::string> nameTake(std::string_view& text, std::string_view ends) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    std::string sName;
    if (!text.starts_with('"') && !text.starts_with('\'')) {
        const std::size_t iEnd = std::min(text.find_first_of(ends), text.size());
        sName = trimmed(text.substr(0, iEnd));
        text.remove_prefix(iEnd);
        return sName;
    }
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == text.front()) {
            text.remove_prefix(i + 1);
            text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
            return sName;
        }
        if (text[i] == '\\' && i + 1 < text.size()) ++i;
        sName += text[i];
    }
    return std::nullopt;
}

// What the text means for values of one kind.
class PropertyValue {
public:
    PropertyValue(Model& model, std::string sWhere, std::string_view text)
        : m_model(model),
          m_sWhere(std::move(sWhere)),
          m_text(text) {}

    // "kind" of what is there, Null for nothing; boSeveral: it is a list.
    [[nodiscard]] NewValue value(Kind kind, bool boSeveral) const {
        const bool boNone = m_text == "NULL" || m_text == "$";
        if (!boSeveral || boNone) return one(m_text, kind);
        if (!m_text.starts_with('(') || !m_text.ends_with(')')) return NewValue::List{one(m_text, kind)};
        NewValue::List items;
        for (const std::string_view item : this->items()) items.push_back(one(item, kind));
        return items;
    }

private:
    [[noreturn]] void vRefuse(std::string_view text, std::string sReason) const {
        throw Refused{{Refusal::Why::Value, m_sWhere, std::string(text), std::move(sReason)}};
    }

    // Commas in quotes and in parentheses cut nothing.
    [[nodiscard]] std::vector<std::string_view> items() const {
        const std::string_view inside = m_text.substr(1, m_text.size() - 2);
        std::vector<std::string_view> items;
        std::size_t iStart = 0;
        int iDepth = 0;
        bool boQuoted = false;
        for (std::size_t i = 0; i <= inside.size(); ++i) {
            const char c = i < inside.size() ? inside[i] : ',';
            if (c == '\'') boQuoted = !boQuoted;
            if (!boQuoted) iDepth += c == '(' ? 1 : c == ')' ? -1 : 0;
            if (i < inside.size() && (c != ',' || boQuoted || iDepth)) continue;
            items.push_back(trimmed(inside.substr(iStart, i - iStart)));
            iStart = i + 1;
        }
        if (boQuoted || iDepth) vRefuse(m_text, "has a quote or a parenthesis without its partner");
        return items;
    }

    [[nodiscard]] NewValue one(std::string_view text, Kind kind) const {
        if (text == "NULL" || text == "$") return nullptr;
        if (auto value = typedOne(text)) return *std::move(value);
        switch (kind) {
        case Kind::Text: return sText(text);
        case Kind::Number: return number(text);
        case Kind::Integer: return iInteger(text);
        case Kind::Boolean: return logical(text, false) == LogicalValue::True;
        case Kind::Logical: return logical(text, true);
        case Kind::Enumerator: return sWord(text);
        case Kind::Binary: return bytes(text);
        case Kind::Null:
        case Kind::Derived:
        case Kind::Element:
        case Kind::List: break;
        }
        return byForm(text);
    }

    [[nodiscard]] NewValue byForm(std::string_view text) const {
        const std::string sUpper = schema::sUpper(text);
        if (sUpper == "TRUE" || sUpper == ".T.") return true;
        if (sUpper == "FALSE" || sUpper == ".F.") return false;
        const std::string_view digits = text.substr(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
        const bool boWhole = !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
        const bool boNumber = !digits.empty() && std::isdigit(static_cast<unsigned char>(digits.front())) &&
                              !(digits.size() > 1 && digits.front() == '0' && digits[1] != '.');   // as in 007
        if (boNumber && boWhole && ifc::toInt(text.data(), text.data() + text.size())) return iInteger(text);
        if (boNumber && !boWhole && realOf(text)) return *realOf(text);
        return sText(text);
    }

    // IFCLABEL(x): empty where no type stands in front.
    [[nodiscard]] std::optional<NewValue> typedOne(std::string_view text) const {
        const std::size_t iOpen = text.find('(');
        if (iOpen == std::string_view::npos || iOpen == 0 || !text.ends_with(')')) return std::nullopt;
        const std::string_view name = text.substr(0, iOpen);
        const schema::Type* pType = schema::pAsType(m_model.core().dataBase().pSchema()->pObjectFromName(name));
        if (!pType || !pType->pDataType) {
            if (schema::sUpper(name).starts_with("IFC") && name.find(' ') == std::string_view::npos)
                vRefuse(text, "begins with no type of " + std::string(m_model.schema()) +
                                  "; a text like this stands in single quotes");
            return std::nullopt;
        }
        const std::string_view inside = trimmed(text.substr(iOpen + 1, text.size() - iOpen - 2));
        return typed(pType->sName, ofType(text, inside, *pType));
    }

    [[nodiscard]] NewValue ofType(std::string_view text, std::string_view inside, const schema::Type& type) const {
        switch (type.pDataType->kind) {
        case DataKind::Real:
        case DataKind::Number: return number(inside);
        case DataKind::Integer: return iInteger(inside);
        case DataKind::Boolean: return logical(inside, false) == LogicalValue::True;
        case DataKind::Logical: return logical(inside, true);
        case DataKind::String: return sText(inside);
        case DataKind::Enumeration: return sWord(inside);
        case DataKind::Binary: return bytes(inside);
        case DataKind::Array:
        case DataKind::List:
        case DataKind::Set:
        case DataKind::Select: break;
        }
        vRefuse(text, "can't be set: " + type.sName + " is " + schema::sTypeText(type.pDataType));
    }

    [[nodiscard]] std::string sText(std::string_view text) const {
        if (!str::boIsValidUtf8(text)) vRefuse("the text", "is no UTF-8");
        if (text.size() < 2 || text.front() != '\'' || text.back() != '\'') return std::string(text);
        std::string sText;
        for (std::size_t i = 1; i + 1 < text.size(); ++i) {
            sText += text[i];
            if (text[i] != '\'') continue;
            if (i + 2 >= text.size() || text[i + 1] != '\'') vRefuse(text, "has a single quote inside; write ''");
            ++i;
        }
        return sText;
    }
    [[nodiscard]] static std::optional<double> realOf(std::string_view text) {
        const std::optional<double> number = ifc::toDouble(text.data(), text.data() + text.size());
        return number && std::isfinite(*number) ? number : std::nullopt;
    }
    [[nodiscard]] double number(std::string_view text) const {
        const std::optional<double> number = realOf(text);
        if (!number) vRefuse(text, "is no number");
        return *number;
    }
    [[nodiscard]] std::int64_t iInteger(std::string_view text) const {
        const std::optional<int> number = ifc::toInt(text.data(), text.data() + text.size());
        if (!number) vRefuse(text, "is no whole number of 32 bits");
        return *number;
    }
    [[nodiscard]] static std::string sWord(std::string_view text) {
        if (text.size() > 2 && text.front() == '.' && text.back() == '.') text = text.substr(1, text.size() - 2);
        return schema::sUpper(text);
    }
    [[nodiscard]] LogicalValue logical(std::string_view text, bool boWithUnknown) const {
        const std::string sLogical = sWord(text);
        if (sLogical == "T" || sLogical == "TRUE") return LogicalValue::True;
        if (sLogical == "F" || sLogical == "FALSE") return LogicalValue::False;
        if (boWithUnknown && (sLogical == "U" || sLogical == "UNKNOWN")) return LogicalValue::Unknown;
        vRefuse(text, boWithUnknown ? "is none of true, false, unknown" : "is neither true nor false");
    }
    [[nodiscard]] Bytes bytes(std::string_view text) const {
        Bytes bytes(text.size() / 2);
        bool boFits = text.size() % 2 == 0;
        for (std::size_t i = 0; i < bytes.size() && boFits; ++i) {
            const char* const pDigits = text.data() + 2 * i;
            boFits = std::from_chars(pDigits, pDigits + 2, bytes[i], 16).ptr == pDigits + 2;
        }
        if (!boFits) vRefuse(text, "is no row of pairs of hexadecimal digits");
        return bytes;
    }

    Model& m_model;
    std::string m_sWhere;
    std::string_view m_text;
};

// Elements whose property takes the text in the same way.
struct Alike {
    std::string sType;
    Kind kind;
    bool boSeveral;
    std::vector<Element> elements;
};

std::vector<Alike> alike(std::span<const Element> elements, const Assignment& assignment, bool boNoValue) {
    std::vector<Alike> groups;
    for (const Element& element : elements) {
        const std::optional<Property> present = property(element, assignment.sSet, assignment.sName);
        if (!present && boNoValue) continue;
        Alike key{{}, Kind::Null, false, {}};
        if (present) {
            std::vector<Value> items;
            if (present->value.kind() == Kind::List) items = present->value.items();
            const Value& value = items.empty() ? present->value : items.front();
            key.boSeveral = present->kind == PropertyKind::List || present->kind == PropertyKind::Enumerated ||
                            present->value.kind() == Kind::List;
            key.kind = value.kind() == Kind::List ? Kind::Null : value.kind();
            key.sType = value.typeName();
        }
        const auto found = std::ranges::find_if(groups, [&key](const Alike& group) {
            return group.sType == key.sType && group.kind == key.kind && group.boSeveral == key.boSeveral;
        });
        (found == groups.end() ? groups.emplace_back(std::move(key)) : *found).elements.push_back(element);
    }
    return groups;
}

std::optional<AssignmentRefusal> assignProperty(Model& model, std::span<const Element> elements,
                                                const Assignment& assignment) {
    const std::string_view text = trimmed(assignment.sValue);
    const PropertyValue reader(model, assignment.sTarget(), text);
    for (const Alike& group : alike(elements, assignment, text == "NULL" || text == "$")) {
        try {
            setProperty(model, group.elements, assignment.sSet, assignment.sName,
                        reader.value(group.kind, group.boSeveral));
        } catch (Refused& refused) {
            return AssignmentRefusal{group.elements.front(), std::move(refused.refusal)};
        }
    }
    return std::nullopt;
}

}   // namespace

std::variant<Assignment, std::string> assignmentFromText(std::string_view text) {
    const std::string sText(text.substr(0, 100));
    const auto refuse = [&sText](const std::string& sReason) { return sText + ": " + sReason; };
    Assignment assignment;
    const bool boQuoted = text.starts_with('"') || text.starts_with('\'');
    std::optional<std::string> name = nameTake(text, ".=");
    if (name && text.starts_with('.')) {
        assignment.sSet = *std::move(name);
        if (assignment.sSet.empty()) return refuse("has no name of a set before the point");
        text.remove_prefix(1);
        name = nameTake(text, "=");
    }
    if (!name) return refuse("has a quote without its partner");
    assignment.sName = *std::move(name);
    if (!text.starts_with('='))
        return refuse("has no = behind the name, as in Name=South or Pset_WallCommon.FireRating=F90");
    if (assignment.sName.empty()) return refuse("has no name before the =");
    assignment.sValue = text.substr(1);
    const std::string& sFirst = assignment.sSet.empty() ? assignment.sName : assignment.sSet;
    if (!boQuoted && std::ranges::find(g_asked, std::string_view(sFirst)) != std::end(g_asked))
        return refuse(sFirst + " can be asked for and not set; what can be are attributes and properties");
    return assignment;
}

std::optional<AssignmentRefusal> assign(Model& model, std::span<const Element> elements, const Assignment& assignment) {
    if (!assignment.sSet.empty()) return assignProperty(model, elements, assignment);
    const std::string_view text = assignment.sValue == "NULL" ? std::string_view("$") : assignment.sValue;
    for (const Element& element : elements)
        if (auto refusal = setFromText(model.core().dataBase(), element.core(), assignment.sName, text))
            return AssignmentRefusal{element, *std::move(refusal)};
    return std::nullopt;
}

}   // namespace oxa::convert
