// The examples of docs/messages.md: each raises the message that it is listed under.
#include <ostrum.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

struct EXAMPLE {
    std::string message, level, place;
    std::vector<std::string> lines;
};

static std::vector<std::string> raised; // "level text"

static void keep_message(TLT_STATEMENT *, int32_t level, const char *text)
{
    static const char *const names[] = { "", "information", "warning", "error", "fatal" };
    raised.push_back(std::string(names[level]) + " " + text);
}

// The columns of a row, with escaped bars put back.
static std::vector<std::string> columns_of(const std::string &row)
{
    std::vector<std::string> columns;
    std::string column;
    for (size_t i = 1; i < row.size(); i++) {
        if (row[i] == '\\' && i + 1 < row.size() && row[i + 1] == '|') {
            column += row[++i];
        } else if (row[i] == '|') {
            columns.push_back(column.substr(1, column.size() - 2));
            column.clear();
        } else {
            column += row[i];
        }
    }
    return columns;
}

// The texts between backquotes.
static std::vector<std::string> spans_of(const std::string &column)
{
    std::vector<std::string> spans;
    for (size_t start = column.find('`'); start != std::string::npos;) {
        const size_t end = column.find('`', start + 1);
        spans.push_back(column.substr(start + 1, end - start - 1));
        start = column.find('`', end + 1);
    }
    return spans;
}

static void read_document(std::string *module, std::vector<EXAMPLE> *examples)
{
    std::ifstream file(OSTRUM_SOURCE_DIR "/docs/messages.md");
    std::string line;
    bool is_module = false;
    while (std::getline(file, line)) {
        if (line.starts_with("```")) {
            is_module = !is_module;
        } else if (is_module) {
            *module += line + "\n";
        } else if (line.starts_with("| `")) {
            const std::vector<std::string> columns = columns_of(line);
            if (columns.size() != 5 || columns[2] == "—") continue;
            examples->push_back(
                { spans_of(columns[0])[0], columns[1], columns[2], spans_of(columns[3]) });
        }
    }
}

// The module with an example's lines in place of the line that its place names.
static std::string source_of(const std::string &module, const EXAMPLE &example)
{
    std::string source;
    std::istringstream lines(example.place == "file" ? "file\n" : module);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t start = line.find_first_not_of(' ');
        const std::string word = start == std::string::npos ? "" : line.substr(start);
        if (word == example.place) {
            for (const std::string &part : example.lines)
                source += line.substr(0, start) + part + "\n";
        } else if (word != "public" && word != "private" && word != "body") {
            source += line + "\n";
        }
    }
    return source;
}

static int32_t parse_section(void *context, const char *, TLP_SECTION *section, int32_t)
{
    TLP_ParseSection(static_cast<TLP_MODULE *>(context), section);
    return 1;
}

static void compile(const std::string &source)
{
    static constexpr uint32_t tell_of_assignments = 0x4000;
    const std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / ("messages_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    const std::string path = (folder / "example.tl").string();
    std::ofstream(path, std::ios::binary) << source;
    TLP_MODULE *module = nullptr;
    TLT_ResetCounters();
    TLP_ReadModule2(nullptr, path.c_str(), &module, stdout, tell_of_assignments, 2, nullptr,
                    nullptr);
    if (module != nullptr) {
        TLP_AllSections(module, parse_section, module);
        int32_t errors = 0;
        if (TLT_GetCounters(nullptr, nullptr, &errors) && errors == 0)
            TLCG_GenerateKOBCode(module, 0, (folder / "example.kob").string().c_str(), 0, "1");
    }
    TLP_DelModule(module);
    std::filesystem::remove_all(folder);
}

// Whether a text begins as the pattern has it, where "…" stands for any run of characters.
static bool fits(const std::string &text, const std::string &pattern)
{
    static const std::string any = "…";
    const size_t gap = pattern.find(any);
    if (gap == std::string::npos) return text.starts_with(pattern);
    if (!text.starts_with(pattern.substr(0, gap))) return false;
    const std::string rest = pattern.substr(gap + any.size());
    for (size_t i = gap; i <= text.size(); i++) {
        if (fits(text.substr(i), rest)) return true;
    }
    return false;
}

static bool was_raised(const EXAMPLE &example)
{
    for (const std::string &message : raised) {
        if (fits(message, example.level + " " + example.message)) return true;
    }
    return false;
}

TEST(MessageExamples, EachRaisesItsMessage)
{
    std::string module;
    std::vector<EXAMPLE> examples;
    read_document(&module, &examples);
    ASSERT_GT(examples.size(), 100u);
    TLCG_Initialise();
    TLT_DefaultMessageHandler(keep_message);

    compile(source_of(module, { "", "", "", {} }));
    EXPECT_TRUE(raised.empty()) << "the module without an example: " << raised[0];
    for (const EXAMPLE &example : examples) {
        raised.clear();
        testing::internal::CaptureStdout();
        compile(source_of(module, example));
        testing::internal::GetCapturedStdout();
        if (was_raised(example)) continue;
        std::string got;
        for (const std::string &message : raised)
            got += "\n  got      " + message;
        ADD_FAILURE() << example.place << ": " << example.lines[0] << "\n  expected "
                      << example.level << " " << example.message << got;
    }
}
