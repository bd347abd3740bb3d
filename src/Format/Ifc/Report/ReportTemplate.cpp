// SPDX-License-Identifier: Apache-2.0
// What inja does not survive, and what is done about it.
//
// inja trusts its templates. What nests without end overflows its stack, a file that includes itself too; "1
// % 0" is a signal; the first item of an empty list, and "| upper" with nothing before it, are memory that is
// not theirs. Plain records are enough for some of that: a source text may be empty. Here all of it throws.
// What stays with the template is how long it runs and how much it writes.
//
// Texts are looked through before inja's parser sees them, with inja's own lexer. In the parsed tree the
// functions that can do harm are exchanged for those of IfcReportFunctions, and bodies count how deep they
// stand. What is long but flat, a sum of many terms or an "else if" behind an "else if", is a deep tree to
// inja: it is laid flat, so that depth is what the template nests and nothing else.
#include "Format/Ifc/Report/ReportTemplate.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

#include <inja/inja.hpp>

#include "Format/Ifc/Report/ReportFunctions.h"
#include "platform/Path.h"

namespace oxa::ifc::report {

namespace {

// docs/robustness.md tells what the limits cost.
//
// In the longest branch of inja's tree before it is laid flat: operators, calls and parentheses of one
// expression, and open statements around it with their "else if". Unlike the rest it is not rendered in
// depth, only taken down.
constexpr std::size_t g_iMostSteps = 8000;
constexpr std::size_t g_iMostLevels = 2 * g_iMostNested;   // of bodies at the time of rendering
constexpr std::size_t g_iMostIncluded = 256;               // files
constexpr std::uintmax_t g_iMostFileBytes = 16u << 20;     // of a file that is included
constexpr std::size_t g_iMostIndexDigits = 6;

// ---- Before parsing ----

// Looks through one text. Throws inja::ParserError for what the parser would not survive.
class TextCheck {
public:
    explicit TextCheck(std::string_view text) : m_lexer(m_config) { m_lexer.start(text); }

    // The names behind "include" and "extends", in their order.
    std::vector<std::string> includes() {
        using Kind = inja::Token::Kind;
        std::vector<std::string> names;
        for (inja::Token token = m_lexer.scan(); token.kind != Kind::Eof; token = m_lexer.scan()) {
            switch (token.kind) {
            case Kind::StatementOpen:
            case Kind::LineStatementOpen:
            case Kind::ExpressionOpen: vBegin(token.kind != Kind::ExpressionOpen); break;
            case Kind::String:
                if ((m_sStatement == "include" || m_sStatement == "extends") && token.text.size() >= 2)
                    names.emplace_back(token.text.substr(1, token.text.size() - 2));
                break;
            case Kind::Id: vId(token.text); break;
            default: vSign(token.kind);
            }
            m_boValueBefore = boValue(token);
            ++m_iToken;
        }
        return names;
    }

private:
    [[noreturn]] void vFail(const std::string& sMessage) const {
        throw inja::ParserError(sMessage, m_lexer.current_position());
    }
    void vCheckNested(std::size_t iDepth) const {
        if (iDepth > g_iMostNested) vFail("nested too deeply");
    }
    void vStep() {
        if (++m_iSteps + m_open.size() > g_iMostSteps) vFail("too long");
    }

    void vBegin(bool boStatement) {
        m_boStatement = boStatement;
        m_sStatement = {};
        m_iToken = 0;
        m_iBrackets = m_iParentheses = m_iSteps = 0;
    }

    static bool boOperatorWord(std::string_view word) {
        return word == "and" || word == "or" || word == "in" || word == "not";
    }

    // "if", "for" and the like, and the second word of "else if".
    [[nodiscard]] bool boKeyword() const {
        return m_boStatement && (m_iToken == 1 || (m_iToken == 2 && m_sStatement == "else"));
    }

    // Whether a "|" behind it has something to work on.
    [[nodiscard]] bool boValue(const inja::Token& token) const {
        using Kind = inja::Token::Kind;
        switch (token.kind) {
        case Kind::Id: return !boKeyword() && !boOperatorWord(token.text);
        case Kind::Number:
        case Kind::String:
        case Kind::RightParen:
        case Kind::RightBracket:
        case Kind::RightBrace: return true;
        default: return false;
        }
    }

    void vId(std::string_view word) {
        const auto iParts = std::count_if(word.begin(), word.end(), [](char c) { return c == '.' || c == '/'; });
        vCheckNested(static_cast<std::size_t>(iParts));
        if (boOperatorWord(word)) vStep();
        if (!boKeyword()) return;
        if (m_iToken == 1)
            vStatement(word);
        else if (word == "if")
            vOpen("else if");
    }

    void vSign(inja::Token::Kind kind) {
        using Kind = inja::Token::Kind;
        switch (kind) {
        case Kind::LeftBracket:
        case Kind::LeftBrace: vCheckNested(++m_iBrackets); break;
        case Kind::RightBracket:
        case Kind::RightBrace:
            if (m_iBrackets > 0) --m_iBrackets;
            break;
        case Kind::RightParen:
            if (m_iParentheses > 0) --m_iParentheses;
            break;
        case Kind::LeftParen:
            vCheckNested(++m_iParentheses);
            vStep();
            break;
        case Kind::Pipe:
            if (!m_boValueBefore || m_iBrackets > 0) vFail("unexpected '|'");
            [[fallthrough]];
        case Kind::Plus:
        case Kind::Minus:
        case Kind::Times:
        case Kind::Slash:
        case Kind::Percent:
        case Kind::Power:
        case Kind::Dot:
        case Kind::Equal:
        case Kind::NotEqual:
        case Kind::GreaterThan:
        case Kind::GreaterEqual:
        case Kind::LessThan:
        case Kind::LessEqual: vStep(); break;
        default: break;
        }
    }

    // The first word of a statement. The parser takes ends in any order, which would let bodies nest
    // uncounted.
    void vStatement(std::string_view word) {
        m_sStatement = word;
        if (word == "if" || word == "for" || word == "block") {
            vOpen(word);
        } else if (word == "else") {
            if (m_open.empty() || !m_open.back().ends_with("if")) vFail("else without matching if");
        } else if (word == "endif" || word == "endfor" || word == "endblock") {
            while (word == "endif" && !m_open.empty() && m_open.back() == "else if") m_open.pop_back();
            if (m_open.empty() || m_open.back() != word.substr(3))
                vFail(std::string(word) + " without matching " + std::string(word.substr(3)));
            m_open.pop_back();
            --m_iBodies;
        }
    }
    void vOpen(std::string_view word) {
        m_open.push_back(word);
        vStep();
        if (word != "else if") vCheckNested(++m_iBodies);
    }

    inja::LexerConfig m_config;
    inja::Lexer m_lexer;
    std::vector<std::string_view> m_open;   // statements without their end so far, the innermost last
    std::size_t m_iBodies = 0;              // of them, each with its "else if" one
    // Of the present statement or expression.
    bool m_boStatement = false;
    std::string_view m_sStatement;   // its first word
    std::size_t m_iToken = 0;        // 0 is what opens it
    std::size_t m_iBrackets = 0;     // open ones
    std::size_t m_iParentheses = 0;
    std::size_t m_iSteps = 0;   // operators, calls and parentheses so far
    bool m_boValueBefore = false;
};

// ---- In the parsed tree ----

using Operation = inja::FunctionStorage::Operation;

struct CheckedRow {
    Operation eOperation;
    Function pFunction;
};
constexpr CheckedRow g_checkedRows[] = {
    {Operation::Add, sum},
    {Operation::Subtract, difference},
    {Operation::Multiplication, product},
    {Operation::Power, power},
    {Operation::Modulo, remainder},
    {Operation::DivisibleBy, divisible},
    {Operation::Round, rounded},
    {Operation::Capitalize, capitalized},
    {Operation::Range, range},
    {Operation::First, first},
    {Operation::Last, last},
    {Operation::Max, largest},
    {Operation::Min, smallest},
};

// What the nodes of a tree share while they are rendered.
struct Progress {
    std::size_t iDepth = 0;      // of the bodies
    bool boNextBranch = false;   // the branch of a row that was rendered last leads to the next one
};

class Level {
public:
    Level(std::size_t& iDepth, std::size_t iWeight) : m_iDepth(iDepth), m_iWeight(iWeight) {
        if (m_iDepth + m_iWeight > g_iMostLevels) throw std::length_error("templates nested too deeply");
        m_iDepth += m_iWeight;
    }
    ~Level() { m_iDepth -= m_iWeight; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

private:
    std::size_t& m_iDepth;
    std::size_t m_iWeight;
};

// A body that counts how many stand around it at the time of rendering, over includes and parent templates
// too.
class CountedBody final : public inja::AstNode {
public:
    CountedBody(std::vector<std::shared_ptr<inja::AstNode>> nodes, Progress& progress)
        : inja::AstNode(0),
          m_progress(progress) {
        m_body.nodes = std::move(nodes);
    }
    void accept(inja::NodeVisitor& visitor) const override {
        const Level level(m_progress.iDepth, 1);
        m_body.accept(visitor);
    }

private:
    inja::BlockNode m_body;
    Progress& m_progress;
};

// "if" and the "else if" behind it, one after the other where inja has each in the "else" of the one before.
// The last node of such an "else" is a NextBranch instead.
class BranchRow final : public inja::AstNode {
public:
    using Branches = std::vector<std::shared_ptr<inja::IfStatementNode>>;

    BranchRow(Branches branches, Progress& progress)
        : inja::AstNode(branches.front()->pos),
          m_branches(std::move(branches)),
          m_progress(progress) {}
    void accept(inja::NodeVisitor& visitor) const override {
        for (const auto& pBranch : m_branches) {
            m_progress.boNextBranch = false;
            pBranch->accept(visitor);
            if (!m_progress.boNextBranch) return;
        }
    }

private:
    Branches m_branches;
    Progress& m_progress;
};

class NextBranch final : public inja::AstNode {
public:
    explicit NextBranch(Progress& progress) : inja::AstNode(0), m_progress(progress) {}
    void accept(inja::NodeVisitor&) const override { m_progress.boNextBranch = true; }

private:
    Progress& m_progress;
};

using Expression = std::shared_ptr<inja::ExpressionNode>;

// A value and the functions that are applied to it, one after the other where inja has each as the first argument of
// the next: sums, conditions, pipelines. Each function finds the value on top of the stack of values, where its first
// argument would have put it; that argument is a plain ExpressionNode now, which does nothing.
//
// Why rows. "a + b + c + ..." is to inja a call in a call in a call: rendering a sum of some thousand terms would need
// as many frames of the stack, and a template may come from anyone. Only the first argument nests that way, so the
// calls are laid out in a row; what is left of depth is what the template nests in parentheses.
class FunctionRow final : public inja::ExpressionNode {
public:
    explicit FunctionRow(std::vector<Expression> steps)
        : inja::ExpressionNode(steps.back()->pos),
          m_steps(std::move(steps)) {}
    void accept(inja::NodeVisitor& visitor) const override {
        for (const Expression& pStep : m_steps) pStep->accept(visitor);
    }

private:
    std::vector<Expression> m_steps;
};

// A call of super(), which leads into another body: what stands around it in its expression counts too.
class CountedCall final : public inja::ExpressionNode {
public:
    CountedCall(Expression pCall, std::size_t iDepth, Progress& progress)
        : inja::ExpressionNode(pCall->pos),
          m_pCall(std::move(pCall)),
          m_iDepth(iDepth),
          m_progress(progress) {}
    void accept(inja::NodeVisitor& visitor) const override {
        const Level level(m_progress.iDepth, m_iDepth);
        m_pCall->accept(visitor);
    }

private:
    Expression m_pCall;
    std::size_t m_iDepth;
    Progress& m_progress;
};

// Makes a parsed tree safe, in place. "progress" is what its nodes share; it must outlive the tree.
class TreeGuard {
public:
    explicit TreeGuard(Progress& progress)
        : m_progress(progress),
          m_pNextBranch(std::make_shared<NextBranch>(progress)) {}

    void vGuard(inja::BlockNode& body) {
        for (auto& pNode : body.nodes) vGuard(pNode);
        body.nodes = {std::make_shared<CountedBody>(std::move(body.nodes), m_progress)};
    }

private:
    void vGuard(std::shared_ptr<inja::AstNode>& pNode) {
        if (auto* const pList = dynamic_cast<inja::ExpressionListNode*>(pNode.get())) {
            vGuard(pList->root, 0);
        } else if (auto* const pFor = dynamic_cast<inja::ForStatementNode*>(pNode.get())) {
            vGuard(pFor->condition.root, 0);
            vGuard(pFor->body);
        } else if (auto pIf = std::dynamic_pointer_cast<inja::IfStatementNode>(pNode)) {
            pNode = std::make_shared<BranchRow>(branches(std::move(pIf)), m_progress);
        } else if (auto* const pBlock = dynamic_cast<inja::BlockStatementNode*>(pNode.get())) {
            vGuard(pBlock->block);
        } else if (auto* const pSet = dynamic_cast<inja::SetStatementNode*>(pNode.get())) {
            vGuard(pSet->expression.root, 0);
            // Only a name of several parts can put a value into another.
            if (pSet->expression.root && pSet->key.find_first_of("./") != std::string::npos)
                vWrap(pSet->expression.root, shallow);
            vCheckIndexes(pSet->key);
        }
    }

    BranchRow::Branches branches(std::shared_ptr<inja::IfStatementNode> pIf) {
        BranchRow::Branches result;
        while (pIf) {
            vGuard(pIf->condition.root, 0);
            vGuard(pIf->true_statement);
            std::shared_ptr<inja::IfStatementNode> pNext;
            auto& rest = pIf->false_statement.nodes;
            if (!rest.empty()) pNext = std::dynamic_pointer_cast<inja::IfStatementNode>(rest.back());
            if (pNext && pNext->is_nested)
                rest.back() = m_pNextBranch;
            else
                pNext.reset();
            vGuard(pIf->false_statement);
            result.push_back(std::exchange(pIf, std::move(pNext)));
        }
        return result;
    }

    // "iDepth": how many functions stand around it that have it as another than their first argument.
    //
    // The chain of first arguments is unwound into steps in a loop. Only the other arguments recurse, and these nest no
    // deeper than the template has parentheses.
    void vGuard(Expression& pExpression, std::size_t iDepth) {
        if (iDepth > g_iMostNested) throw std::length_error("an expression nested too deeply");
        std::vector<Expression> steps;   // the last function first
        while (pExpression) {
            Expression pInner;
            if (auto* const pFunction = dynamic_cast<inja::FunctionNode*>(pExpression.get());
                pFunction && !pFunction->arguments.empty()) {
                vCheck(*pFunction);
                for (std::size_t i = 1; i < pFunction->arguments.size(); ++i)
                    vGuard(pFunction->arguments[i], iDepth + 1);
                pInner = std::exchange(pFunction->arguments.front(), m_pDone);
            }
            if (boSuper(*pExpression))
                pExpression = std::make_shared<CountedCall>(std::move(pExpression), iDepth, m_progress);
            steps.push_back(std::exchange(pExpression, std::move(pInner)));
        }
        if (steps.empty()) return;
        std::reverse(steps.begin(), steps.end());
        pExpression = steps.size() == 1 ? steps.front() : std::make_shared<FunctionRow>(std::move(steps));
    }

    static bool boSuper(const inja::ExpressionNode& expression) {
        const auto* const pFunction = dynamic_cast<const inja::FunctionNode*>(&expression);
        return pFunction && pFunction->operation == Operation::Super;
    }

    // Puts what is safe in the place of what is not.
    static void vCheck(inja::FunctionNode& function) {
        Expression& pFirst = function.arguments.front();
        // "(name).part" would follow the null that stands for a missing name.
        if (function.operation == Operation::AtId && dynamic_cast<const inja::DataNode*>(pFirst.get()))
            vWrap(pFirst, found);
        if (function.operation == Operation::Super) vWrap(pFirst, upwards);
        for (const CheckedRow& row : g_checkedRows) {
            if (row.eOperation != function.operation) continue;
            function.operation = Operation::Callback;
            function.callback = row.pFunction;
            return;
        }
    }

    // "set list.2000000000 = 1" would fill the list up to there.
    static void vCheckIndexes(std::string_view key) {
        std::size_t iDigits = 0;
        bool boIndex = false;   // so far the part is one
        for (const char c : key) {
            if (c == '.' || c == '/') {
                boIndex = true;
                iDigits = 0;
                continue;
            }
            boIndex = boIndex && c >= '0' && c <= '9';
            if (boIndex && ++iDigits > g_iMostIndexDigits) throw std::length_error("an index of so many digits");
        }
    }

    static void vWrap(Expression& pExpression, Function pFunction) {
        auto pCall = std::make_shared<inja::FunctionNode>("", pExpression->pos);
        pCall->number_args = 1;
        pCall->callback = pFunction;
        pCall->arguments.push_back(std::move(pExpression));
        pExpression = std::move(pCall);
    }

    Progress& m_progress;
    std::shared_ptr<inja::AstNode> m_pNextBranch;
    Expression m_pDone = std::make_shared<inja::ExpressionNode>(0);   // an argument that has its value
};

// ---- The whole ----

class ReportTemplate {
public:
    // Parses "text". Names of files in it are relative to "folder", which ends in "/", and inside a file to
    // the folder of that. What is wrong with the text or with a file throws a std::exception.
    ReportTemplate(std::string_view text, const std::string& sFolder, const inja::FunctionStorage& functions)
        : m_functions(functions),
          m_main(parsed(text, sFolder, 0)) {}
    ReportTemplate(const ReportTemplate&) = delete;
    ReportTemplate& operator=(const ReportTemplate&) = delete;

    void vRender(const Json& data, std::ostream& out) const {
        inja::Renderer(inja::RenderConfig(), m_included, m_functions).render_to(out, m_main, data);
    }

private:
    inja::Template parsed(std::string_view text, const std::filesystem::path& folder, std::size_t iDepth) {
        for (const std::string& sName : TextCheck(text).includes()) vInclude(sName, folder, iDepth);
        inja::Template result =
            inja::Parser(m_parser, m_lexer, m_included, m_functions).parse(text, str::sOfPath(folder));
        TreeGuard(m_progress).vGuard(result.root);
        return result;
    }

    // Puts a file into the store under the name by which the parser asks for it, so that it opens none
    // itself.
    void vInclude(const std::string& sName, const std::filesystem::path& folder, std::size_t iDepth) {
        if (m_included.contains(sName)) return;
        std::string sPath = str::sOfPath(folder / str::pathOf(sName));
        if (sPath.starts_with("./")) sPath.erase(0, 2);
        if (m_included.contains(sPath)) return;
        if (iDepth >= g_iMostNested || m_included.size() >= g_iMostIncluded)
            throw inja::FileError("too many files included, the last one '" + sPath + "'");
        const std::string sText = fileText(sPath);
        m_included.emplace(sPath, inja::Template());   // known from here on, to what it includes in turn
        m_included[sPath] = parsed(sText, str::pathOf(sPath).parent_path(), iDepth + 1);
    }

    // Only of a regular file: a device may have no end.
    static std::string fileText(const std::string& sPath) {
        std::error_code error;
        const std::filesystem::path path = str::pathOf(sPath);
        if (std::filesystem::is_regular_file(path, error) &&
            std::filesystem::file_size(path, error) <= g_iMostFileBytes) {
            std::ifstream file(path, std::ios::binary);
            if (file) return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        }
        throw inja::FileError("failed accessing file at '" + sPath + "'");
    }

    const inja::FunctionStorage& m_functions;
    inja::ParserConfig m_parser;
    inja::LexerConfig m_lexer;
    mutable Progress m_progress;
    inja::TemplateStorage m_included;
    inja::Template m_main;
};

}   // namespace

void vRender(std::string_view text, const std::string& sFolder, const Callback& localize, const Json& data,
             std::ostream& out) {
    inja::FunctionStorage functions;
    functions.add_callback("localize", 0, localize);   // inja's "any number" leaves none out
    functions.add_callback("localize", -1, localize);
    ReportTemplate(text, sFolder, functions).vRender(data, out);
}

}   // namespace oxa::ifc::report
