// Random programs as text.
#include "random_maker.h"

#include <set>

namespace random_program
{

std::string print(const Expression &expression, int limit)
{
    std::string text;
    for (size_t at = 0; at < expression.text.size(); ++at) {
        const bool is_operand = expression.text[at] == '%' && at + 1 < expression.text.size() &&
                                expression.text[at + 1] >= '0' && expression.text[at + 1] <= '9';
        if (!is_operand) {
            text += expression.text[at];
            continue;
        }
        const auto index = static_cast<size_t>(expression.text[++at] - '0');
        text += print(expression.operands[index], expression.limits[index]);
    }
    return expression.level > limit ? "(" + text + ")" : text;
}

namespace
{

// The heads of loops join a condition to their own by AND.
int limit_of(const std::string &head)
{
    return head.compare(0, 6, "WHILE ") == 0 ? LOGICAL_AND - 1 : ANYTHING;
}

std::string print_head(const Leg &leg)
{
    std::string text;
    for (size_t at = 0; at < leg.head.size(); ++at) {
        const bool is_expression = leg.head[at] == '%' && at + 1 < leg.head.size() &&
                                   leg.head[at + 1] >= '0' && leg.head[at + 1] <= '9';
        text += is_expression ? print(leg.expressions[static_cast<size_t>(leg.head[++at] - '0')],
                                      limit_of(leg.head))
                              : std::string(1, leg.head[at]);
    }
    return text;
}

void print_block(const std::vector<Statement> &block, size_t indent, std::string *text)
{
    for (const Statement &statement : block) {
        for (const Leg &leg : statement.legs) {
            *text += std::string(indent, ' ') + print_head(leg) + "\n";
            print_block(leg.body, indent + 4, text);
        }
    }
}

std::set<std::string> words_of(const std::string &text)
{
    std::set<std::string> words_found;
    std::string word;
    for (const char c : text + " ") {
        const bool is_letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (is_letter || c == '_' || (c >= '0' && c <= '9')) {
            word += c;
        } else if (!word.empty()) {
            words_found.insert(word);
            word.clear();
        }
    }
    return words_found;
}

std::string print_declarations(const std::map<std::string, std::string> &all,
                               const std::set<std::string> &used)
{
    std::string text;
    for (const auto &[name, declaration] : all)
        if (used.count(name) != 0) text += (text.empty() ? "VAR " : "    ") + declaration + "\n";
    return text;
}

std::string print_function(const Function &function)
{
    std::string body;
    print_block(function.body, 4, &body);
    return function.head + "\n" + print_declarations(function.locals, words_of(body)) + "BEGIN\n" +
           body + "END\n";
}

constexpr char module_head[] = R"(MODULE fuzz
ENUM COLOUR = RED GREEN BLUE
TYPEDEF RECORD PART(INT size, CHAR tag, COLOUR colour, VOLTAGE level, STRING title, BOOL good)
TYPEDEF RECORD BOX(INT count, PART inner, INT cells[4], CHAR marks[4])
TYPEDEF -> PART PART_REF
TYPEDEF FUNCTION INT OPERATION(INT a, b)
CONST INT TABLE[4] = 3, -1, 4, 100000
      INT LIMIT = 3, SPACING = 2
      STRING WORDS[2] = "low", "middle"
      CHAR LETTERS[4] = 'a', 'b', 'Z', '~'
      PART PARTS[2] = (1, 'x', GREEN, 3V, "one", TRUE), (-2, 'y', BLUE, 4V, "two", FALSE)
SYSCALL (40) INT ask(INT which)
        (41) VOID tell(INT value)
        (42) BOOL truth(INT which)
        (43) VOLTAGE measure(CHAR channel, COLOUR colour)
        (44) VOID say(STRING format ..)
        (45) COLOUR pick(STRING name)
        (46) TIME now()
        (47) FLOAT root(FLOAT value)
        (48) CHAR read(SHORT channel, WORD mask)
        (49) STRING label(QUANTITY reading)
)";

constexpr char private_head[] = R"(FUNCTION INT plus(INT a, b)
BEGIN
    RETURN a + b
END
FUNCTION INT minus(INT a, b)
BEGIN
    tell(a)
    RETURN a - b
END
)";

struct Text {
    std::string public_part;
    std::string statics;
    std::string functions;
};

// The functions that the entry reaches, and the statics that these use.
void print_program(const Program &program, Text *text)
{
    std::set<std::string> used{ program.entry };
    std::string functions;
    for (size_t i = program.functions.size(); i-- > 0;) {
        const Function &function = program.functions[i];
        if (used.count(function.name) == 0) continue;
        const std::string printed = print_function(function);
        used.merge(words_of(printed));
        functions = printed + functions;
        const size_t first = function.head.find(' ');
        if (function.is_public)
            text->public_part +=
                function.head.substr(0, first) + function.head.substr(first) + "\n";
    }
    text->functions += functions;
    for (const auto &[name, declaration] : program.statics)
        if (used.count(name) != 0) text->statics += "VAR " + declaration + "\n";
}

} // namespace

std::string module_text(const std::vector<const Program *> &programs)
{
    Text text;
    for (const Program *program : programs)
        print_program(*program, &text);
    return module_head + text.public_part + "PRIVATE\n" + text.statics + private_head +
           text.functions;
}

} // namespace random_program
