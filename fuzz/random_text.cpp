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

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || (c >= '0' && c <= '9');
}

std::set<std::string> words_of(const std::string &text)
{
    std::set<std::string> words_found;
    std::string word;
    for (const char c : text + " ") {
        if (is_letter(c)) {
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

// The functions inside stand between the declarations and the body; those that nothing calls are left
// out.
std::string print_function(const Function &function)
{
    std::string body;
    print_block(function.body, 4, &body);
    std::set<std::string> used = words_of(body);
    std::string inside;
    for (const Function &inner : function.inner)
        if (used.count(inner.name) != 0) inside += print_function(inner);
    used.merge(words_of(inside));
    return function.head + "\n" + print_declarations(function.locals, used) + inside + "BEGIN\n" +
           body + "END\n";
}

constexpr char shared_head[] = R"(ENUM COLOUR = RED GREEN BLUE
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

// Only with programs that name what they describe.
constexpr const char *data_names[] = { "scale", "steps", "pump",   "fan",    "pulses",
                                       "ramp",  "plug",  "socket", "spot",   "contact",
                                       "leg",   "face",  "advice", "warning" };

constexpr char data_head[] = R"(DATA CONVERTER scale
DATA CONVERTER steps
DATA COMPONENT pump
DATA COMPONENT fan
DATA WAVEFORM pulses
DATA WAVEFORM ramp
DATA CONNECTOR plug
DATA CONNECTOR socket
DATA HELPSCREEN advice
DATA HELPSCREEN warning
FUNCTION VARLOC spot(INT which)
         POINT contact(INT which)
         PIN leg(INT which)
         VIEW face(INT which)
)";

constexpr char data_sections[] = R"(DATA CONVERTER scale
BEGIN
    Multiplier = 3, Divisor = 2, Offset = -40
    STATE "cold", -4000, 60
    STATE "warm", 61, 9000
END
DATA CONVERTER steps
BEGIN
    MAP 0, 10
    MAP 1000, -50
    Next = scale
END
DATA WAVEFORM pulses
BEGIN
    0, 255, 0, 255
END
DATA WAVEFORM ramp
BEGIN
    0, 64, 128, 192
END
DATA COMPONENT pump
BEGIN
    Name = {PUMP}, Location = {ENGINE_BAY}
    VARLOC inlet Location = {LEFT_SIDE}
    VARLOC outlet Location = {RIGHT_SIDE}, Attributes = 5
END
DATA COMPONENT fan
BEGIN
    Name = {FAN}, Parent = pump
    VARLOC hub Location = {FRONT}
END
DATA CONNECTOR plug
BEGIN
    Name = {PLUG}, Mnemonic = {C104}
    VIEW mating
        Name = {MATING_SIDE}, Shell = {TWO_PINS}, Component = pump
        Flags = Front
    VIEW wires
        Name = {WIRE_SIDE}, Shell = {TWO_PINS_BACK}, Component = fan, Helpscreen = advice
        Flags = Removable, Back
    PIN A
        Name = "A", SignalName = "SUPPLY"
        POINT probe Location = {PIN_A}, View = mating, Sex = FEMALE
    PIN B
        Name = "B"
        POINT tap Location = {PIN_B}, View = mating, Sex = FEMALE
END
DATA CONNECTOR socket
BEGIN
    Name = {SOCKET}, Mnemonic = {C105}
    PIN A
        Name = "A"
END
DATA HELPSCREEN advice
BEGIN
    Title = {ADVICE}
    "Pull the plug", Help = warning
    PICTURE {PLUG_PULLED}
END
DATA HELPSCREEN warning
BEGIN
    Type = Popup
    {IGNITION_OFF}
END
FUNCTION VARLOC spot(INT which)
BEGIN
    IF which == 0
        RETURN pump.inlet
    RETURN fan.hub
END
FUNCTION POINT contact(INT which)
BEGIN
    IF which == 0
        RETURN plug.A.probe
    RETURN plug.B.tap
END
FUNCTION PIN leg(INT which)
BEGIN
    IF which == 0
        RETURN plug.A
    RETURN socket.A
END
FUNCTION VIEW face(INT which)
BEGIN
    IF which == 0
        RETURN plug.mating
    RETURN plug.wires
END
)";

constexpr char shared_functions[] = R"(FUNCTION INT plus(INT a, b)
BEGIN
    RETURN a + b
END
FUNCTION INT minus(INT a, b)
BEGIN
    tell(a)
    RETURN a - b
END
)";

// What the shared head declares, and the functions below it.
constexpr const char *shared_names[] = {
    "COLOUR", "RED",     "GREEN", "BLUE",    "PART",  "BOX",   "PART_REF", "OPERATION", "TABLE",
    "LIMIT",  "SPACING", "WORDS", "LETTERS", "PARTS", "ask",   "tell",     "truth",     "measure",
    "say",    "pick",    "now",   "root",    "read",  "label", "plus",     "minus",
};

constexpr char shared_prototypes[] = R"(FUNCTION INT plus(INT a, b)
         INT minus(INT a, b)
)";

// Puts the library's name before those that it declares. Fields and quoted text are none.
std::string qualified(const std::string &text, const std::set<std::string> &names)
{
    std::string result;
    char quote = 0;
    for (size_t at = 0; at < text.size();) {
        const char c = text[at];
        size_t end = at + 1;
        if (quote == 0 && is_letter(c))
            while (end < text.size() && is_letter(text[end]))
                ++end;
        const std::string word = text.substr(at, end - at);
        const bool is_field = at > 0 && (text[at - 1] == ':' || text[at - 1] == '>');
        if (quote == 0 && !is_field && names.count(word) != 0) result += "FUZZLIB.";
        if (quote == c) {
            quote = 0;
        } else if (quote == 0 && (c == '"' || c == '\'')) {
            quote = c;
        }
        result += word;
        at = end;
    }
    return result;
}

// The parts of a module.
struct Text {
    std::string public_part;
    std::string statics;
    std::string functions;
};

void print_prototype(const Function &function, bool is_public, Text *text)
{
    if (function.known == Known::ENTRY) {
        text->public_part += "ENTRY " + function.head + "\n";
    } else if (is_public || function.known == Known::PUBLIC) {
        text->public_part += function.head + "\n";
    } else if (function.known == Known::FORWARD) {
        text->statics += "FORWARD " + function.head + "\n";
    }
}

// The functions that the entry reaches, and the statics that these use.
void print_program(const Program &program, Text *main, Text *library, std::set<std::string> *names)
{
    std::set<std::string> used{ program.entry };
    std::string functions[2];
    for (size_t i = program.functions.size(); i-- > 0;) {
        const Function &function = program.functions[i];
        if (used.count(function.name) == 0) continue;
        const bool is_outside = program.is_split && function.is_library;
        const std::string printed = print_function(function);
        used.merge(words_of(printed));
        functions[is_outside] = printed + functions[is_outside];
        print_prototype(function, is_outside, is_outside ? library : main);
        if (is_outside) names->insert(function.name);
    }
    main->functions += functions[0];
    library->functions += functions[1];
    for (const auto &[name, variable] : program.statics) {
        const bool is_outside = program.is_split && variable.is_library;
        if (used.count(name) != 0)
            (is_outside ? library : main)->statics += variable.declaration + "\n";
    }
}

std::string module_of(const Text &text, const std::string &functions)
{
    return text.public_part + "PRIVATE\n" + text.statics + functions + text.functions;
}

} // namespace

const std::vector<std::string> converter_attributes{
    "scale\tFLAGS\t0",
    "scale\tMULTIPLIER\t3",
    "scale\tDIVISOR\t2",
    "scale\tOFFSET\t-40",
    "scale\tSTATES\t2",
    "scale\tSTATELOW\t-4000\t61",
    "scale\tSTATEHIGH\t60\t9000",
    "scale\tSTATETEXT\tcold\twarm",
    "steps\tFLAGS\t0",
    "steps\tMAPINPUT\t0\t1000",
    "steps\tMAPOUTPUT\t10\t-50",
    "steps\tNEXT\t=scale",
};

Sources sources_of(const std::vector<const Program *> &programs)
{
    Text main;
    Text library;
    bool is_split = false;
    bool has_items = false;
    std::set<std::string> names(std::begin(shared_names), std::end(shared_names));
    for (const Program *program : programs) {
        print_program(*program, &main, &library, &names);
        is_split |= program->is_split;
    }
    const std::set<std::string> used = words_of(main.functions + library.functions);
    for (const char *name : data_names) {
        has_items |= used.count(name) != 0;
        names.insert(name);
    }
    if (has_items) {
        Text *owner = is_split ? &library : &main;
        owner->public_part = data_head + owner->public_part;
        owner->statics = data_sections + owner->statics;
    }
    if (!is_split)
        return { std::string("MODULE fuzz\n") + shared_head + module_of(main, shared_functions),
                 "" };
    library.public_part = shared_prototypes + library.public_part;
    return { "MODULE fuzz\nUSES fuzzlib\n" + qualified(module_of(main, ""), names),
             std::string("MODULE fuzzlib\n") + shared_head + module_of(library, shared_functions) };
}

} // namespace random_program
