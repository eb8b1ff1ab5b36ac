#include <Maths/VoLinearProblemText.h>

#include <FileSystem/VoFilePath.h>
#include <IO/VoWholeFile.h>
#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/detail/ProblemLimits.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

constexpr std::size_t MostBytes = std::size_t(256) << 20;

[[noreturn]] void Refuse(std::size_t line, const std::string& reason)
{
    throw VoLinearProblemException(VoString("Line " + std::to_string(line) + ": " + reason));
}

std::string Quoted(std::string_view text)
{
    constexpr std::size_t most = 40;
    std::string quoted = "\"";
    quoted.append(text.substr(0, most));
    quoted += text.size() > most ? "...\"" : "\"";
    return quoted;
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v';
}

bool StartsName(char c)
{
    static constexpr std::string_view symbols = "!\"#$%&(),;?@_`'{}~/";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || symbols.find(c) != std::string_view::npos;
}

std::string Lowered(std::string_view text)
{
    std::string lowered(text);
    for (char& c : lowered)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lowered;
}

enum class Keyword
{
    None,
    Maximise,
    Minimise,
    SubjectTo,
    Bounds,
    Unsupported, // a section that no simple problem has
    End
};

Keyword KeywordOf(std::string_view name)
{
    // Outlives all static objects.
    static const auto& keywords =
        *new std::unordered_map<std::string, Keyword>{{"max", Keyword::Maximise},
                                                      {"maximum", Keyword::Maximise},
                                                      {"maximize", Keyword::Maximise},
                                                      {"maximise", Keyword::Maximise},
                                                      {"min", Keyword::Minimise},
                                                      {"minimum", Keyword::Minimise},
                                                      {"minimize", Keyword::Minimise},
                                                      {"minimise", Keyword::Minimise},
                                                      {"st", Keyword::SubjectTo},
                                                      {"st.", Keyword::SubjectTo},
                                                      {"s.t.", Keyword::SubjectTo},
                                                      {"bound", Keyword::Bounds},
                                                      {"bounds", Keyword::Bounds},
                                                      {"general", Keyword::Unsupported},
                                                      {"generals", Keyword::Unsupported},
                                                      {"gen", Keyword::Unsupported},
                                                      {"integer", Keyword::Unsupported},
                                                      {"integers", Keyword::Unsupported},
                                                      {"int", Keyword::Unsupported},
                                                      {"binary", Keyword::Unsupported},
                                                      {"binaries", Keyword::Unsupported},
                                                      {"bin", Keyword::Unsupported},
                                                      {"semi", Keyword::Unsupported},
                                                      {"semis", Keyword::Unsupported},
                                                      {"semi-continuous", Keyword::Unsupported},
                                                      {"sos", Keyword::Unsupported},
                                                      {"sos1", Keyword::Unsupported},
                                                      {"sos2", Keyword::Unsupported},
                                                      {"end", Keyword::End}};
    if (name.size() > 15)
        return Keyword::None;
    const auto found = keywords.find(Lowered(name));
    return found == keywords.end() ? Keyword::None : found->second;
}

struct Token
{
    enum Kind
    {
        Number,
        Name,
        Section, // a keyword
        Sign,    // '+' or '-'
        Colon,
        Relation, // '<', '>' or '='
        TextEnd
    };

    Kind kind = TextEnd;
    std::size_t line = 1;
    std::string_view text;
    double number = 0;
    char symbol = 0; // of a sign or a relation
    Keyword keyword = Keyword::None;
};

// Takes a text apart. One token is looked at ahead, a second one to tell a label from a variable.
class Scanner
{
public:
    explicit Scanner(std::string_view text)
        : m_rest(text)
    {
        m_ahead[0] = scan();
        m_ahead[1] = scan();
    }

    const Token& peek(std::size_t distance = 0) const { return m_ahead[distance]; }

    Token take()
    {
        const Token token = m_ahead[0];
        m_ahead[0] = m_ahead[1];
        m_ahead[1] = scan();
        return token;
    }

private:
    void skipBlanks()
    {
        while (!m_rest.empty()) {
            const char c = m_rest.front();
            if (c == '\\') {
                m_rest.remove_prefix(std::min(m_rest.find('\n'), m_rest.size()));
            } else if (c == '\n') {
                ++m_line;
                m_rest.remove_prefix(1);
            } else if (IsBlank(c)) {
                m_rest.remove_prefix(1);
            } else {
                return;
            }
        }
    }

    Token scan()
    {
        skipBlanks();
        Token token;
        token.line = m_line;
        if (m_rest.empty())
            return token;
        const char c = m_rest.front();
        if (IsDigit(c) || c == '.')
            return scanNumber(token);
        if (StartsName(c))
            return scanName(token);
        if (c == '<' || c == '>' || c == '=')
            return scanRelation(token);
        if (c != '+' && c != '-' && c != ':')
            Refuse(m_line, "Character not expected: " + Quoted(m_rest.substr(0, 1)));
        token.kind = c == ':' ? Token::Colon : Token::Sign;
        return finish(token, 1, c);
    }

    Token finish(Token token, std::size_t length, char symbol = 0)
    {
        token.text = m_rest.substr(0, length);
        token.symbol = symbol;
        m_rest.remove_prefix(length);
        return token;
    }

    Token scanNumber(Token token)
    {
        token.kind = Token::Number;
        const char* end = m_rest.data() + m_rest.size();
        const auto [stop, error] = std::from_chars(m_rest.data(), end, token.number);
        if (error == std::errc::result_out_of_range)
            Refuse(m_line,
                   "Number out of range: " + Quoted(m_rest.substr(0, static_cast<std::size_t>(stop - m_rest.data()))));
        if (error != std::errc())
            Refuse(m_line, "Number expected");
        return finish(token, static_cast<std::size_t>(stop - m_rest.data()));
    }

    Token scanName(Token token)
    {
        std::size_t length = 1;
        while (length < m_rest.size() &&
               (StartsName(m_rest[length]) || IsDigit(m_rest[length]) || m_rest[length] == '.'))
            ++length;
        if (Lowered(m_rest.substr(0, 5)) == "semi-" && Lowered(m_rest.substr(0, 15)) == "semi-continuous")
            length = 15;
        token.kind = Token::Name;
        token.keyword = KeywordOf(m_rest.substr(0, length));
        const std::string first = length <= 7 ? Lowered(m_rest.substr(0, length)) : std::string();
        if (first == "subject" || first == "such") {
            const std::size_t words = lengthOfTwoWords(length, first == "subject" ? "to" : "that");
            if (words != 0) {
                length = words;
                token.keyword = Keyword::SubjectTo;
            }
        }
        if (token.keyword != Keyword::None)
            token.kind = Token::Section;
        return finish(token, length);
    }

    // The length up to the end of the second word, on the same line; 0 when it is another one.
    std::size_t lengthOfTwoWords(std::size_t first, std::string_view second) const
    {
        std::size_t start = first;
        while (start < m_rest.size() && IsBlank(m_rest[start]))
            ++start;
        const std::size_t stop = start + second.size();
        if (Lowered(m_rest.substr(start, second.size())) != second)
            return 0;
        return stop < m_rest.size() && (StartsName(m_rest[stop]) || IsDigit(m_rest[stop])) ? 0 : stop;
    }

    // "<", "<=" and "=<" mean the same.
    Token scanRelation(Token token)
    {
        token.kind = Token::Relation;
        const char first = m_rest.front();
        const char second = m_rest.size() > 1 ? m_rest[1] : '\0';
        if (first == '=' && (second == '<' || second == '>'))
            return finish(token, 2, second);
        return finish(token, first != '=' && second == '=' ? 2 : 1, first);
    }

    std::string_view m_rest;
    std::size_t m_line = 1;
    std::array<Token, 2> m_ahead;
};

// One function for each rule of the grammar.
class Parser
{
public:
    explicit Parser(std::string_view text)
        : m_scanner(text)
    {
    }

    VoLinearProblemText parse()
    {
        parseObjective();
        parseConstraints();
        if (peek().keyword == Keyword::Bounds)
            parseBounds();
        if (peek().keyword == Keyword::Unsupported)
            Refuse(peek().line, "Section " + Quoted(peek().text) + " does not fit the solver");
        if (peek().keyword != Keyword::End)
            Refuse(peek().line,
                   peek().kind == Token::TextEnd ? "\"end\" is missing" : "Not expected: " + shown(peek()));
        m_scanner.take();
        if (peek().kind != Token::TextEnd)
            Refuse(peek().line, "Text after \"end\": " + shown(peek()));
        checkShape();
        return build();
    }

private:
    struct Term
    {
        std::size_t variable;
        double coefficient;
        std::size_t line;
    };

    struct Row
    {
        std::string name;
        std::vector<Term> terms;
        double bound = 0;
        std::size_t line = 0;
    };

    const Token& peek() const { return m_scanner.peek(); }

    static std::string shown(const Token& token)
    {
        return token.kind == Token::TextEnd ? "the end of the text" : Quoted(token.text);
    }

    void parseObjective()
    {
        const Token sense = m_scanner.take();
        if (sense.keyword != Keyword::Maximise && sense.keyword != Keyword::Minimise)
            Refuse(sense.line, "\"maximize\" or \"minimize\" expected, not " + shown(sense));
        m_maximise = sense.keyword == Keyword::Maximise;
        m_objective.line = sense.line;
        m_objective.name = parseLabel("obj");
        m_objective.terms = parseTerms();
        if (!m_maximise)
            for (const Term& term : m_objective.terms)
                if (term.coefficient < 0)
                    Refuse(term.line, "Negative coefficient of " + Quoted(m_names[term.variable]) +
                                          " in an objective to be minimized does not fit the solver");
    }

    void parseConstraints()
    {
        const Token section = m_scanner.take();
        if (section.keyword != Keyword::SubjectTo)
            Refuse(section.line, "\"subject to\" expected, not " + shown(section));
        std::unordered_set<std::string> names;
        while (peek().kind != Token::Section && peek().kind != Token::TextEnd) {
            parseConstraint();
            if (!names.insert(m_rows.back().name).second)
                Refuse(m_rows.back().line, "Constraint " + Quoted(m_rows.back().name) + " appears twice");
        }
        m_lastLine = peek().line;
    }

    void parseConstraint()
    {
        Row row;
        row.line = peek().line;
        row.name = parseLabel("c" + std::to_string(m_rows.size() + 1));
        row.terms = parseTerms();
        if (row.terms.empty())
            Refuse(peek().line, "Constraint without variables");
        const Token relation = m_scanner.take();
        if (relation.kind != Token::Relation)
            Refuse(relation.line, "\"<=\" or \">=\" expected, not " + shown(relation));
        if (relation.symbol != (m_maximise ? '<' : '>'))
            Refuse(relation.line, m_maximise ? "Only \"<=\" constraints fit the solver when maximizing"
                                             : "Only \">=\" constraints fit the solver when minimizing");
        row.bound = parseNumber();
        if (peek().kind == Token::Relation)
            Refuse(peek().line, "Ranges do not fit the solver");
        if (m_maximise && row.bound < 0)
            Refuse(row.line, "Negative bound of constraint " + Quoted(row.name) +
                                 ": the origin must be feasible when maximizing");
        m_rows.push_back(std::move(row));
    }

    // Variables are not negative and have no limit without being told; nothing else may be said of them.
    void parseBounds()
    {
        m_scanner.take();
        while (peek().kind != Token::Section && peek().kind != Token::TextEnd) {
            const std::size_t line = peek().line;
            bool fits = false;
            Side left = parseBoundSide();
            int relations = 0;
            do {
                const Token relation = m_scanner.take();
                const Side right = parseBoundSide();
                fits = relation.kind == Token::Relation && SaysNothing(left, relation.symbol, right) &&
                       (++relations == 1 || left == Side::Variable);
                left = right;
            } while (fits && peek().kind == Token::Relation);
            if (!fits)
                Refuse(line, "Only the bounds \">= 0\" and \"<= +inf\" of a variable fit the solver");
        }
    }

    enum class Side
    {
        Variable,
        Zero,
        Infinity,
        Other
    };

    static bool SaysNothing(Side left, char relation, Side right)
    {
        if (right == Side::Variable && left != Side::Variable)
            return SaysNothing(right, relation == '<' ? '>' : relation == '>' ? '<' : relation, left);
        return left == Side::Variable &&
               ((relation == '>' && right == Side::Zero) || (relation == '<' && right == Side::Infinity));
    }

    // Infinity has a sign; without one it is the name of a variable.
    Side parseBoundSide()
    {
        const bool isSigned = peek().kind == Token::Sign;
        const double sign = parseSigns();
        const Token token = m_scanner.take();
        if (token.kind == Token::Number)
            return token.number == 0 ? Side::Zero : Side::Other;
        if (token.kind != Token::Name)
            return Side::Other;
        const std::string name = Lowered(token.text);
        if (isSigned)
            return sign > 0 && (name == "inf" || name == "infinity") ? Side::Infinity : Side::Other;
        if (m_variables.find(std::string(token.text)) == m_variables.end())
            Refuse(token.line, "Unknown variable " + Quoted(token.text));
        return Side::Variable;
    }

    std::string parseLabel(std::string otherwise)
    {
        if (peek().kind != Token::Name || m_scanner.peek(1).kind != Token::Colon)
            return otherwise;
        std::string label(m_scanner.take().text);
        m_scanner.take();
        return label;
    }

    std::vector<Term> parseTerms()
    {
        std::vector<Term> terms;
        std::unordered_set<std::size_t> seen;
        while (peek().kind == Token::Sign || peek().kind == Token::Number || peek().kind == Token::Name) {
            if (peek().kind != Token::Sign && !terms.empty())
                Refuse(peek().line, "\"+\" or \"-\" expected before " + shown(peek()));
            terms.push_back(parseTerm());
            if (!seen.insert(terms.back().variable).second)
                Refuse(terms.back().line, "Variable " + Quoted(m_names[terms.back().variable]) + " appears twice");
        }
        return terms;
    }

    Term parseTerm()
    {
        double coefficient = parseSigns();
        if (peek().kind == Token::Number)
            coefficient *= m_scanner.take().number;
        const Token name = m_scanner.take();
        if (name.kind != Token::Name)
            Refuse(name.line, "Variable expected, not " + shown(name) + " (constants do not fit the solver)");
        return {variable(std::string(name.text)), coefficient, name.line};
    }

    double parseSigns()
    {
        double sign = 1;
        while (peek().kind == Token::Sign)
            if (m_scanner.take().symbol == '-')
                sign = -sign;
        return sign;
    }

    double parseNumber()
    {
        const double sign = parseSigns();
        const Token token = m_scanner.take();
        if (token.kind != Token::Number)
            Refuse(token.line, "Number expected, not " + shown(token));
        return sign * token.number;
    }

    std::size_t variable(std::string name)
    {
        const auto [found, isNew] = m_variables.emplace(std::move(name), m_names.size());
        if (isNew)
            m_names.push_back(found->first);
        return found->second;
    }

    void checkShape() const
    {
        if (m_names.empty() || m_rows.empty())
            Refuse(m_lastLine, m_names.empty() ? "Problem without variables" : "Problem without constraints");
        if (!m_maximise && m_names.size() != m_rows.size())
            Refuse(m_lastLine, "A problem to be minimized must have as many constraints as variables, not " +
                                   std::to_string(m_rows.size()) + " for " + std::to_string(m_names.size()));
        if (!vo::detail::FitsTableau(m_names.size(), m_rows.size()))
            Refuse(m_lastLine, "Problem is too large for the solver");
    }

    VoVector<double> coefficients(const std::vector<Term>& terms) const
    {
        VoVector<double> values(m_names.size());
        for (const Term& term : terms)
            values.data()[term.variable] = term.coefficient;
        return values;
    }

    VoLinearProblemText build() const
    {
        VoLinearProblemText text;
        text.objectiveName = VoString(m_objective.name);
        text.problem = VoLinearProblem(m_maximise ? VoLinearProblem::Sense::Maximise : VoLinearProblem::Sense::Minimise,
                                       coefficients(m_objective.terms));
        for (const std::string& name : m_names)
            text.parameterNames.pushBack(VoString(name));
        for (const Row& row : m_rows) {
            text.problem.addConstraint(coefficients(row.terms), row.bound);
            text.constraintNames.pushBack(VoString(row.name));
        }
        return text;
    }

    Scanner m_scanner;
    bool m_maximise = true;
    Row m_objective;
    std::vector<Row> m_rows;
    std::vector<std::string> m_names;
    std::unordered_map<std::string, std::size_t> m_variables;
    std::size_t m_lastLine = 1; // where the constraints end
};

} // namespace

VoLinearProblemText VoLinearProblemText::Parse(const VoString& text)
{
    return Parser(text.toStdString()).parse();
}

VoLinearProblemText VoLinearProblemText::Read(const VoFilePath& path)
{
    const std::optional<std::string> text = vo::ReadWholeFile(path, MostBytes);
    if (!text)
        throw VoLinearProblemException("File is too large");
    return Parser(*text).parse();
}
