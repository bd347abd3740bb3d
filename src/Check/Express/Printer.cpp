// SPDX-License-Identifier: Apache-2.0
#include "Check/Express/Printer.h"

#include <iterator>
#include <string_view>

namespace oxa::check::express {

namespace {

// From Power to Like in the order of Op.
constexpr std::string_view g_operators[] = {"**", "*",  "/", "DIV", "MOD", "AND", "||",  "+",    "-",  "OR",  "XOR",
                                            "=",  "<>", "<", ">",   "<=",  ">=",  ":=:", ":<>:", "IN", "LIKE"};
static_assert(static_cast<int>(Op::Power) + static_cast<int>(std::size(g_operators)) - 1 == static_cast<int>(Op::Like));

constexpr std::string_view g_forms[] = {"",       "GENERIC", "GENERIC_ENTITY", "AGGREGATE", "ARRAY",   "BAG",
                                        "LIST",   "SET",     "BINARY",         "BOOLEAN",   "INTEGER", "LOGICAL",
                                        "NUMBER", "REAL",    "STRING"};
static_assert(std::size(g_forms) == static_cast<std::size_t>(TypeForm::String) + 1);

class Writer {
public:
    std::string sResult;

    void vExpression(const Expression& expression) {
        sResult.append(expression.iParentheses, '(');
        vBare(expression);
        sResult.append(expression.iParentheses, ')');
    }
    void vType(const TypeTree& type);
    void vBlock(const Block& block);
    void vSchema(const SchemaRules& rules);

private:
    void vBare(const Expression& expression);
    void vIndexed(const Expression& expression);
    void vQuery(const Expression& expression);
    void vInterval(const Expression& expression);
    void vBinary(const Expression& expression);
    template <class Items>
    void vList(const Items& items);
    void vNames(const std::vector<std::string>& names);
    void vDeclaration(const Declaration& declaration);
    void vInner(const Declarations& declarations);
    void vConstants(const Declarations& declarations);
    void vStatement(const Statement& statement);
    void vBody(const Body& body);
    void vCase(const Statement& statement);
    void vIf(const Statement& statement);
    void vRepeat(const Statement& statement);
    void vRules(const std::vector<DomainRule>& rules);
    void vEntity(const EntityRules& entity);
    void vOptional(std::string_view before, const ExpressionPtr& pExpression) {
        if (!pExpression) return;
        sResult += before;
        vExpression(*pExpression);
    }
};

template <class Items>
void Writer::vList(const Items& items) {
    std::string_view between;
    for (const auto& pItem : items) {
        sResult += between;
        vExpression(*pItem);
        between = ", ";
    }
}

void Writer::vBare(const Expression& expression) {
    switch (expression.op) {
    case Op::Integer:
    case Op::Real:
    case Op::String:
    case Op::Encoded:
    case Op::Name: sResult += expression.sText; return;
    case Op::Binary: sResult += '%' + expression.sText; return;
    case Op::True: sResult += "TRUE"; return;
    case Op::False: sResult += "FALSE"; return;
    case Op::Unknown: sResult += "UNKNOWN"; return;
    case Op::Indeterminate: sResult += '?'; return;
    case Op::Self: sResult += "SELF"; return;
    case Op::Pi: sResult += "PI"; return;
    case Op::ConstE: sResult += "CONST_E"; return;
    case Op::Attribute:
    case Op::Group:
        vExpression(*expression.operands[0]);
        sResult += (expression.op == Op::Attribute ? '.' : '\\') + expression.sText;
        return;
    case Op::Index: vIndexed(expression); return;
    case Op::Call:
        sResult += expression.sText + '(';
        vList(expression.operands);
        sResult += ')';
        return;
    case Op::Negate:
    case Op::Plus:
    case Op::Not:
        sResult += expression.op == Op::Negate ? "-" : expression.op == Op::Plus ? "+" : "NOT ";
        vExpression(*expression.operands[0]);
        return;
    case Op::Interval: vInterval(expression); return;
    case Op::Aggregate:
        sResult += '[';
        vList(expression.operands);
        sResult += ']';
        return;
    case Op::Repeated:
        vExpression(*expression.operands[0]);
        vOptional(" : ", expression.operands[1]);
        return;
    case Op::Query: vQuery(expression); return;
    default: vBinary(expression); return;
    }
}

void Writer::vIndexed(const Expression& expression) {
    vExpression(*expression.operands[0]);
    sResult += '[';
    vExpression(*expression.operands[1]);
    if (expression.operands.size() > 2) vOptional(" : ", expression.operands[2]);
    sResult += ']';
}

void Writer::vQuery(const Expression& expression) {
    sResult += "QUERY(" + expression.sText + " <* ";
    vExpression(*expression.operands[0]);
    vOptional(" | ", expression.operands[1]);
    sResult += ')';
}

void Writer::vInterval(const Expression& expression) {
    const auto pText = [](Op op) { return op == Op::LessEqual ? " <= " : " < "; };
    sResult += '{';
    vExpression(*expression.operands[0]);
    vOptional(pText(expression.eLow), expression.operands[1]);
    vOptional(pText(expression.eHigh), expression.operands[2]);
    sResult += '}';
}

void Writer::vBinary(const Expression& expression) {
    vExpression(*expression.operands[0]);
    sResult += ' ';
    sResult += g_operators[static_cast<std::size_t>(expression.op) - static_cast<std::size_t>(Op::Power)];
    sResult += ' ';
    vExpression(*expression.operands[1]);
}

void Writer::vType(const TypeTree& type) {
    sResult +=
        type.form == TypeForm::Named ? std::string_view(type.sName) : g_forms[static_cast<std::size_t>(type.form)];
    if (type.form != TypeForm::Named && !type.sName.empty()) sResult += " : " + type.sName;
    if (type.pHigh) {
        sResult += " [";
        vExpression(*type.pLow);
        vOptional(":", type.pHigh);
        sResult += ']';
    } else if (type.pLow) {
        vOptional("(", type.pLow);
        sResult += ')';
    }
    if (type.boFixed) sResult += " FIXED";
    if (!type.pElement) return;
    sResult += " OF ";
    if (type.boOptional) sResult += "OPTIONAL ";
    if (type.boUnique) sResult += "UNIQUE ";
    vType(*type.pElement);
}

void Writer::vNames(const std::vector<std::string>& names) {
    std::string_view between;
    for (const std::string& sName : names) {
        sResult += between;
        sResult += sName;
        between = ", ";
    }
}

void Writer::vDeclaration(const Declaration& declaration) {
    if (declaration.boVar) sResult += "VAR ";
    if (!declaration.sGroup.empty()) sResult += "SELF\\" + declaration.sGroup + '.';
    vNames(declaration.names);
    if (!declaration.sRenamed.empty()) sResult += " RENAMED " + declaration.sRenamed;
    sResult += " : ";
    vType(declaration.type);
    vOptional(" := ", declaration.pValue);
}

void Writer::vConstants(const Declarations& declarations) {
    if (declarations.constants.empty()) return;
    sResult += "CONSTANT\n";
    for (const Declaration& constant : declarations.constants) {
        vDeclaration(constant);
        sResult += ";\n";
    }
    sResult += "END_CONSTANT;\n";
}

void Writer::vInner(const Declarations& declarations) {
    vConstants(declarations);
    for (const Block& block : declarations.blocks) vBlock(block);
}

void Writer::vBlock(const Block& block) {
    static constexpr std::string_view g_words[] = {"FUNCTION", "PROCEDURE", "RULE"};
    const std::string_view word = g_words[static_cast<std::size_t>(block.kind)];
    sResult += word;
    sResult += ' ' + block.sName;
    if (block.kind == BlockKind::Rule) sResult += " FOR ";
    if (!block.parameters.empty() || block.kind == BlockKind::Rule) sResult += '(';
    vNames(block.populations);
    std::string_view between;
    for (const Declaration& parameter : block.parameters) {
        sResult += between;
        vDeclaration(parameter);
        between = "; ";
    }
    if (!block.parameters.empty() || block.kind == BlockKind::Rule) sResult += ')';
    if (block.kind == BlockKind::Function) {
        sResult += " : ";
        vType(block.result);
    }
    sResult += ";\n";
    vInner(block.inner);
    if (block.boLocals) {
        sResult += "LOCAL\n";
        for (const Declaration& local : block.locals) {
            vDeclaration(local);
            sResult += ";\n";
        }
        sResult += "END_LOCAL;\n";
    }
    vBody(block.body);
    vRules(block.rules);
    sResult += "END_";
    sResult += word;
    sResult += ";\n";
}

void Writer::vBody(const Body& body) {
    for (const StatementPtr& pStatement : body) vStatement(*pStatement);
}

void Writer::vStatement(const Statement& statement) {
    switch (statement.kind) {
    case StatementKind::Alias:
        sResult += "ALIAS " + statement.sText + " FOR ";
        vExpression(*statement.pFirst);
        sResult += ";\n";
        vBody(statement.body);
        sResult += "END_ALIAS";
        break;
    case StatementKind::Assign:
        vExpression(*statement.pFirst);
        vOptional(" := ", statement.pSecond);
        break;
    case StatementKind::Case: vCase(statement); break;
    case StatementKind::Compound:
        sResult += "BEGIN\n";
        vBody(statement.body);
        sResult += "END";
        break;
    case StatementKind::Escape: sResult += "ESCAPE"; break;
    case StatementKind::If: vIf(statement); break;
    case StatementKind::Null: break;
    case StatementKind::Call: vExpression(*statement.pFirst); break;
    case StatementKind::Repeat: vRepeat(statement); break;
    case StatementKind::Return:
        sResult += "RETURN";
        vOptional(" ", statement.pFirst);
        break;
    case StatementKind::Skip: sResult += "SKIP"; break;
    }
    sResult += ";\n";
}

void Writer::vCase(const Statement& statement) {
    sResult += "CASE ";
    vExpression(*statement.pFirst);
    sResult += " OF\n";
    for (const CaseAction& action : statement.cases) {
        vList(action.labels);
        sResult += " : ";
        vStatement(*action.pAction);
    }
    if (statement.boAlternative) {
        sResult += "OTHERWISE : ";
        vBody(statement.alternative);
    }
    sResult += "END_CASE";
}

void Writer::vIf(const Statement& statement) {
    sResult += "IF ";
    vExpression(*statement.pFirst);
    sResult += " THEN\n";
    vBody(statement.body);
    if (statement.boAlternative) {
        sResult += "ELSE\n";
        vBody(statement.alternative);
    }
    sResult += "END_IF";
}

void Writer::vRepeat(const Statement& statement) {
    sResult += "REPEAT";
    if (!statement.sText.empty()) {
        sResult += ' ' + statement.sText;
        vOptional(" := ", statement.pFirst);
        vOptional(" TO ", statement.pSecond);
        vOptional(" BY ", statement.pThird);
    }
    vOptional(" WHILE ", statement.pWhile);
    vOptional(" UNTIL ", statement.pUntil);
    sResult += ";\n";
    vBody(statement.body);
    sResult += "END_REPEAT";
}

void Writer::vRules(const std::vector<DomainRule>& rules) {
    if (rules.empty()) return;
    sResult += "WHERE\n";
    for (const DomainRule& rule : rules) {
        if (!rule.sLabel.empty()) sResult += rule.sLabel + " : ";
        vExpression(*rule.pCondition);
        sResult += ";\n";
    }
}

void Writer::vEntity(const EntityRules& entity) {
    sResult += "ENTITY " + entity.sName + ";\n";
    if (!entity.derived.empty()) sResult += "DERIVE\n";
    for (const Declaration& attribute : entity.derived) {
        vDeclaration(attribute);
        sResult += ";\n";
    }
    if (!entity.uniques.empty()) sResult += "UNIQUE\n";
    for (const UniqueRule& rule : entity.uniques) {
        if (!rule.sLabel.empty()) sResult += rule.sLabel + " : ";
        vList(rule.attributes);
        sResult += ";\n";
    }
    vRules(entity.rules);
    sResult += "END_ENTITY;\n";
}

void Writer::vSchema(const SchemaRules& rules) {
    sResult += "SCHEMA " + rules.sName + ";\n";
    vConstants(rules.outer);
    for (const TypeRules& type : rules.types) {
        sResult += "TYPE " + type.sName + ";\n";
        vRules(type.rules);
        sResult += "END_TYPE;\n";
    }
    for (const EntityRules& entity : rules.entities) vEntity(entity);
    for (const Block& block : rules.outer.blocks) vBlock(block);
    sResult += "END_SCHEMA;\n";
}

template <class Tree>
std::string sWritten(void (Writer::*vWrite)(const Tree&), const Tree& tree) {
    Writer writer;
    (writer.*vWrite)(tree);
    return std::move(writer.sResult);
}

}   // namespace

std::string sText(const Expression& expression) { return sWritten(&Writer::vExpression, expression); }
std::string sText(const TypeTree& type) { return sWritten(&Writer::vType, type); }
std::string sText(const Block& block) { return sWritten(&Writer::vBlock, block); }
std::string sText(const SchemaRules& rules) { return sWritten(&Writer::vSchema, rules); }

}   // namespace oxa::check::express
