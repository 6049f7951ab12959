// COMPILE: the command is made from the table of the compiler's options.

#include "ostrum.h"

#include "toll_compile.h"
#include "toll_options.h"

namespace
{

/** Gives a qualifier the value that the option takes. */
void add_value(CLI_QUALIFIER *qualifier, const TOLL_OPTION &option)
{
    const int32_t requirement =
        option.argument == TOLL_ARGUMENT_OPTIONAL ? CLI_OPTIONAL : CLI_MANDATORY;
    if (option.repeats) {
        CLI_ListParameter(qualifier, "LIST", requirement, 1, ',', option.meaning);
    } else if (!option.words.empty()) {
        CLI_PARAMETER *choice = CLI_ChoiceParameter(qualifier, "WORD", requirement, option.meaning);
        for (size_t at = 0; at < option.words.size(); at++)
            CLI_Choice(choice, option.words[at], static_cast<int32_t>(at), option.words[at]);
    } else {
        CLI_PARAMETER *text = CLI_CharParameter(qualifier, option.value, requirement, 1,
                                                ostrum_path_size, option.meaning);
        const bool is_file = std::string{ "FILE" } == option.value;
        CLI_SetFilePattern(text, is_file ? "*" : nullptr);
    }
}

/** Sets an option from a qualifier that was given with a value, or without one. */
bool set_option(TOLL_OPTIONS *options, const TOLL_OPTION &option, const intptr_t *value)
{
    if (value == nullptr) return option.set(options, nullptr);
    if (!option.repeats && !option.words.empty())
        return option.set(options, option.words[static_cast<size_t>(*value)]);
    const char *text = reinterpret_cast<const char *>(*value);
    if (!option.repeats) return option.set(options, text);
    for (const std::string &word : ostrum_words(text, ',')) {
        if (!option.set(options, word.c_str())) return false;
    }
    return true;
}

bool read_qualifiers(TOLL_OPTIONS *options)
{
    for (const TOLL_OPTION &option : option_rows()) {
        constexpr intptr_t none = INTPTR_MIN; // neither an address nor a place among words
        intptr_t value = none;
        if (CLI_GetQualifier(option.name, &value) == 0) continue;
        if (!set_option(options, option, value == none ? nullptr : &value)) return false;
    }
    return true;
}

int32_t add_source(void *options, const char *source)
{
    static_cast<TOLL_OPTIONS *>(options)->sources.emplace_back(source);
    return 1;
}

void compile(intptr_t)
{
    TOLL_OPTIONS options;
    bool is_sound = ostrum_add_settings(&options);
    CLI_AllListParameterValues(add_source, &options);
    is_sound = is_sound && read_qualifiers(&options);
    const char *conflict = find_conflict(options);
    if (!is_sound || conflict != nullptr) {
        ostrum_complain(is_sound ? conflict : options.problem);
        return;
    }
    ostrum_settings.source = options.sources.back();
    if (compile_all(options) != 0) {
        CLI_FailCommand();
        return;
    }
    const std::string module = module_path(options);
    if (!module.empty()) ostrum_settings.module = module;
}

} // namespace

bool ostrum_add_settings(TOLL_OPTIONS *options)
{
    options->include_paths = ostrum_words(ostrum_settings.include, ';');
    for (const std::string &name : ostrum_words(ostrum_settings.define, ',')) {
        for (const TOLL_OPTION &option : option_rows()) {
            if (std::string{ "define" } == option.name && !option.set(options, name.c_str()))
                return false;
        }
    }
    return true;
}

CLI_NODE *ostrum_add_compile(CLI_NODE *root)
{
    CLI_NODE *node =
        CLI_Node(root, "COMPILE", compile, 0, "Compiles sources, and takes the last one in hand");
    CLI_PARAMETER *sources =
        CLI_ListParameter(node, "SOURCES", CLI_MANDATORY, 1, ',', "TOLL sources");
    CLI_SetFilePattern(sources, "*.tl");
    for (const TOLL_OPTION &option : option_rows()) {
        CLI_QUALIFIER *qualifier =
            CLI_Qualifier(node, option.name, CLI_OPTIONAL, 0, option.meaning);
        if (option.argument != TOLL_ARGUMENT_NONE) add_value(qualifier, option);
    }
    return node;
}
