// ReportTemplate: a template text of inja, and the files that it includes, made ready so that rendering can fail
// and nothing worse.
//
// For      Errors::writeReport, the only source that includes this header: inja is slow to compile.
// Why      inja trusts its templates. What nests without end overflows its stack, a file that includes itself
//          too; "1 % 0" is a signal; the first item of an empty list, and "| upper" with nothing before it, are
//          memory that is not theirs. Plain records are enough for some of that: a source text may be empty.
//          Here all of it throws. What stays with the template is how long it runs and how much it writes.
// How      texts are looked through before inja's parser sees them, with inja's own lexer; in the parsed tree
//          the functions that can do harm are exchanged for checked ones of the same results, and bodies count
//          how deep they stand.
// Threads  one.
#pragma once

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <numeric>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <inja/inja.hpp>

namespace oxa::ifc::report {

using inja::json;

// How deep anything may nest: statements, expressions, brackets, parts of a name. Stacks of 512 KiB hold it.
inline constexpr std::size_t g_iMostNested = 64;
inline constexpr std::size_t g_iMostIncluded = 256;             // files
inline constexpr std::uintmax_t g_iMostFileBytes = 16u << 20;   // of a file that is included
inline constexpr std::size_t g_iMostIndexDigits = 6;
inline constexpr json::number_integer_t g_iMostInRange = 1000000;   // items

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

    void vBegin(bool boStatement) {
        m_boStatement = boStatement;
        m_sStatement = {};
        m_iToken = 0;
        m_iBrackets = m_iSteps = 0;
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
        const auto iParts =
            std::count_if(word.begin(), word.end(), [](char c) { return c == '.' || c == '/'; });
        vCheckNested(static_cast<std::size_t>(iParts));
        if (boOperatorWord(word)) vCheckNested(++m_iSteps);
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
        case Kind::Pipe:
            if (!m_boValueBefore || m_iBrackets > 0) vFail("unexpected '|'");
            [[fallthrough]];
        case Kind::LeftParen:
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
        case Kind::LessEqual: vCheckNested(++m_iSteps); break;
        default: break;
        }
    }

    // The first word of a statement. The parser takes ends in any order, which would let bodies nest uncounted.
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
        }
    }
    void vOpen(std::string_view word) {
        m_open.push_back(word);
        vCheckNested(m_open.size());
    }

    inja::LexerConfig m_config;
    inja::Lexer m_lexer;
    std::vector<std::string_view> m_open;   // statements without their end so far, the innermost last
    // Of the present statement or expression.
    bool m_boStatement = false;
    std::string_view m_sStatement;   // its first word
    std::size_t m_iToken = 0;        // 0 is what opens it
    std::size_t m_iBrackets = 0;     // open ones
    std::size_t m_iSteps = 0;        // operators, calls and parentheses
    bool m_boValueBefore = false;
};

// ---- Checked functions: the results of inja's own wherever those have one ----

using Integer = json::number_integer_t;
using Real = json::number_float_t;

template <class Number>
Number fromReal(Real value) {
    if (!(value >= static_cast<Real>(std::numeric_limits<Number>::min()) &&
          value < -static_cast<Real>(std::numeric_limits<Number>::min())))
        throw std::overflow_error("the result is too large");
    return static_cast<Number>(value);
}

enum class Sign { Plus, Minus, Times };

template <Sign eSign>
json calculated(inja::Arguments& args) {
    const json& a = *args.at(0);
    const json& b = *args.at(1);
    if (eSign == Sign::Plus && a.is_string() && b.is_string())
        return a.get_ref<const std::string&>() + b.get_ref<const std::string&>();
    if (a.is_number_integer() && b.is_number_integer()) {
        Integer iResult = 0;
        const Integer iA = a.get<Integer>();
        const Integer iB = b.get<Integer>();
        const bool boTooLarge = eSign == Sign::Plus    ? __builtin_add_overflow(iA, iB, &iResult)
                                : eSign == Sign::Minus ? __builtin_sub_overflow(iA, iB, &iResult)
                                                       : __builtin_mul_overflow(iA, iB, &iResult);
        if (boTooLarge) throw std::overflow_error("the result is too large");
        return iResult;
    }
    const Real valueA = a.get<Real>();
    const Real valueB = b.get<Real>();
    if (eSign == Sign::Plus) return valueA + valueB;
    return eSign == Sign::Minus ? valueA - valueB : valueA * valueB;
}

inline json power(inja::Arguments& args) {
    const Integer iExponent = args.at(1)->get<Integer>();
    const Real result = std::pow(args.at(0)->get<Real>(), static_cast<Real>(iExponent));
    if (args.at(0)->is_number_integer() && iExponent >= 0) return fromReal<Integer>(result);
    return result;
}

inline json rounded(inja::Arguments& args) {
    const Integer iPrecision = args.at(1)->get<Integer>();
    const Real factor = std::pow(10.0, static_cast<Real>(iPrecision));
    const Real result = std::round(args.at(0)->get<Real>() * factor) / factor;
    if (iPrecision == 0) return fromReal<int>(result);
    return result;
}

// The smallest integer divided by -1 is a signal as well as anything divided by 0.
inline Integer iRemainder(Integer iValue, Integer iDivisor) { return iDivisor == -1 ? 0 : iValue % iDivisor; }

inline json remainder(inja::Arguments& args) {
    const Integer iDivisor = args.at(1)->get<Integer>();
    if (iDivisor == 0) throw std::domain_error("division by zero");
    return iRemainder(args.at(0)->get<Integer>(), iDivisor);
}

inline json divisible(inja::Arguments& args) {
    const Integer iDivisor = args.at(1)->get<Integer>();
    return iDivisor != 0 && iRemainder(args.at(0)->get<Integer>(), iDivisor) == 0;
}

inline json capitalized(inja::Arguments& args) {
    auto text = args.at(0)->get<std::string>();
    for (char& c : text) {
        const auto iByte = static_cast<unsigned char>(c);
        c = static_cast<char>(&c == &text.front() ? std::toupper(iByte) : std::tolower(iByte));
    }
    return text;
}

inline json range(inja::Arguments& args) {
    const Integer iCount = args.at(0)->get<Integer>();
    if (iCount < 0 || iCount > g_iMostInRange) throw std::length_error("range of such a length");
    std::vector<int> numbers(static_cast<std::size_t>(iCount));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

// Of a list or an object; a plain value is its own only item.
inline const json& notEmpty(const json& value) {
    if (value.empty()) throw std::out_of_range("an item of an empty list");
    return value;
}

inline json first(inja::Arguments& args) { return notEmpty(*args.at(0)).front(); }
inline json last(inja::Arguments& args) { return notEmpty(*args.at(0)).back(); }
inline json largest(inja::Arguments& args) {
    const json& items = notEmpty(*args.at(0));
    return *std::max_element(items.begin(), items.end());
}
inline json smallest(inja::Arguments& args) {
    const json& items = notEmpty(*args.at(0));
    return *std::min_element(items.begin(), items.end());
}

// ---- Checks of one argument, which goes on as it is ----

inline json found(inja::Arguments& args) { return *args.at(0); }   // a missing variable has thrown before

inline json upwards(inja::Arguments& args) {
    if (args.at(0)->get<int>() < 1) throw std::domain_error("super() leads to a parent template only");
    return *args.at(0);
}

// How deep the lists and objects of a value nest, as far as g_iMostNested. Level by level, not over the stack.
inline json shallow(inja::Arguments& args) {
    std::vector<const json*> level{args.at(0)};
    for (std::size_t iDepth = 0; !level.empty(); ++iDepth) {
        if (iDepth > g_iMostNested) throw std::length_error("a variable nested too deeply");
        std::vector<const json*> next;
        for (const json* pValue : level)
            if (pValue->is_structured())
                for (const json& item : *pValue) next.push_back(&item);
        level = std::move(next);
    }
    return *args.at(0);
}

using Function = json (*)(inja::Arguments& args);
using Operation = inja::FunctionStorage::Operation;

struct CheckedRow {
    Operation eOperation;
    Function pFunction;
};
inline constexpr CheckedRow g_checkedRows[] = {
    {Operation::Add, calculated<Sign::Plus>},
    {Operation::Subtract, calculated<Sign::Minus>},
    {Operation::Multiplication, calculated<Sign::Times>},
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

// ---- In the parsed tree ----

// A body that counts how many stand around it at the time of rendering, over includes and parent templates too.
class CountedBody final : public inja::AstNode {
public:
    CountedBody(std::vector<std::shared_ptr<inja::AstNode>> nodes, std::size_t& iDepth)
        : inja::AstNode(0), m_iDepth(iDepth) {
        m_body.nodes = std::move(nodes);
    }
    void accept(inja::NodeVisitor& visitor) const override {
        const Level level(m_iDepth);
        m_body.accept(visitor);
    }

private:
    struct Level {
        explicit Level(std::size_t& iDepth) : m_iDepth(iDepth) {
            if (m_iDepth >= 2 * g_iMostNested) throw std::length_error("templates nested too deeply");
            ++m_iDepth;
        }
        ~Level() { --m_iDepth; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;
        std::size_t& m_iDepth;
    };

    inja::BlockNode m_body;
    std::size_t& m_iDepth;
};

// Makes a parsed tree safe, in place. "iDepth" is what its bodies count in; it must outlive the tree.
class TreeGuard {
public:
    explicit TreeGuard(std::size_t& iDepth) : m_iDepth(iDepth) {}

    void vGuard(inja::BlockNode& body) {
        for (const auto& pNode : body.nodes) vGuard(*pNode);
        body.nodes = {std::make_shared<CountedBody>(std::move(body.nodes), m_iDepth)};
    }

private:
    using Expression = std::shared_ptr<inja::ExpressionNode>;

    void vGuard(inja::AstNode& node) {
        if (auto* const pList = dynamic_cast<inja::ExpressionListNode*>(&node)) {
            vGuard(pList->root);
        } else if (auto* const pFor = dynamic_cast<inja::ForStatementNode*>(&node)) {
            vGuard(pFor->condition.root);
            vGuard(pFor->body);
        } else if (auto* const pIf = dynamic_cast<inja::IfStatementNode*>(&node)) {
            vGuard(pIf->condition.root);
            vGuard(pIf->true_statement);
            vGuard(pIf->false_statement);
        } else if (auto* const pBlock = dynamic_cast<inja::BlockStatementNode*>(&node)) {
            vGuard(pBlock->block);
        } else if (auto* const pSet = dynamic_cast<inja::SetStatementNode*>(&node)) {
            vGuard(pSet->expression.root);
            // Only a name of several parts can put a value into another.
            if (pSet->expression.root && pSet->key.find_first_of("./") != std::string::npos)
                vWrap(pSet->expression.root, shallow);
            vCheckIndexes(pSet->key);
        }
    }

    void vGuard(const Expression& pExpression) {
        auto* const pFunction = dynamic_cast<inja::FunctionNode*>(pExpression.get());
        if (!pFunction) return;
        for (const Expression& pArgument : pFunction->arguments) vGuard(pArgument);
        // "(name).part" would follow the null that stands for a missing name.
        if (pFunction->operation == Operation::AtId &&
            dynamic_cast<const inja::DataNode*>(pFunction->arguments.front().get()))
            vWrap(pFunction->arguments.front(), found);
        if (pFunction->operation == Operation::Super && !pFunction->arguments.empty())
            vWrap(pFunction->arguments.front(), upwards);
        for (const CheckedRow& row : g_checkedRows) {
            if (row.eOperation != pFunction->operation) continue;
            pFunction->operation = Operation::Callback;
            pFunction->callback = row.pFunction;
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
            if (boIndex && ++iDigits > g_iMostIndexDigits)
                throw std::length_error("an index of so many digits");
        }
    }

    static void vWrap(Expression& pExpression, Function pFunction) {
        auto pCall = std::make_shared<inja::FunctionNode>("", pExpression->pos);
        pCall->number_args = 1;
        pCall->callback = pFunction;
        pCall->arguments.push_back(std::move(pExpression));
        pExpression = std::move(pCall);
    }

    std::size_t& m_iDepth;
};

// ---- The whole ----

class ReportTemplate {
public:
    // Parses "text". Names of files in it are relative to "folder", which ends in "/", and inside a file to the
    // folder of that. What is wrong with the text or with a file throws a std::exception.
    ReportTemplate(std::string_view text, const std::string& sFolder, const inja::FunctionStorage& functions)
        : m_functions(functions), m_main(parsed(text, sFolder, 0)) {}
    ReportTemplate(const ReportTemplate&) = delete;
    ReportTemplate& operator=(const ReportTemplate&) = delete;

    void vRender(const json& data, std::ostream& out) const {
        inja::Renderer(inja::RenderConfig(), m_included, m_functions).render_to(out, m_main, data);
    }

private:
    inja::Template parsed(std::string_view text, const std::filesystem::path& folder, std::size_t iDepth) {
        for (const std::string& sName : TextCheck(text).includes()) vInclude(sName, folder, iDepth);
        inja::Template result =
            inja::Parser(m_parser, m_lexer, m_included, m_functions).parse(text, folder.string());
        TreeGuard(m_iDepth).vGuard(result.root);
        return result;
    }

    // Puts a file into the store under the name by which the parser asks for it, so that it opens none itself.
    void vInclude(const std::string& sName, const std::filesystem::path& folder, std::size_t iDepth) {
        if (m_included.contains(sName)) return;
        std::string sPath = (folder / sName).string();
        if (sPath.starts_with("./")) sPath.erase(0, 2);
        if (m_included.contains(sPath)) return;
        if (iDepth >= g_iMostNested / 4 || m_included.size() >= g_iMostIncluded)
            throw inja::FileError("too many files included, the last one '" + sPath + "'");
        const std::string sText = fileText(sPath);
        m_included.emplace(sPath, inja::Template());   // known from here on, to what it includes in turn
        m_included[sPath] = parsed(sText, std::filesystem::path(sPath).parent_path(), iDepth + 1);
    }

    // Only of a regular file: a device may have no end.
    static std::string fileText(const std::string& sPath) {
        std::error_code error;
        if (std::filesystem::is_regular_file(sPath, error) &&
            std::filesystem::file_size(sPath, error) <= g_iMostFileBytes) {
            std::ifstream file(sPath);
            if (file) return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        }
        throw inja::FileError("failed accessing file at '" + sPath + "'");
    }

    const inja::FunctionStorage& m_functions;
    inja::ParserConfig m_parser;
    inja::LexerConfig m_lexer;
    mutable std::size_t m_iDepth = 0;   // of the bodies that are being rendered
    inja::TemplateStorage m_included;
    inja::Template m_main;
};

}   // namespace oxa::ifc::report
