// The language manual data/inc/ZORVEL.HTM stays true to the compiler: every
// example in it builds through the assembler, every example of a command that
// is still to come fails only because that command is not there yet (and
// builds once those lines are taken out), every statement keyword, function
// and DECLARE setting has a section, and every link of the contents resolves.
#include "compiler/commands/commands.h"
#include "compiler/driver/file_io.h"
#include "compiler/frontend/device.h"
#include "compiler/frontend/keywords.h"
#include "compiler/frontend/ram.h"
#include "support/test_support.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sstream>

namespace zorvel::test {
namespace {

namespace fs = std::filesystem;

struct Example {
    std::string section; // heading text of the section that holds it
    std::string classes; // the class attribute of its <pre>
    std::string raw;     // as it stands in the HTML
    std::string source;  // unescaped
    bool planned() const { return classes == "example planned"; }
};

const std::string& manual() {
    static const std::string text =
        readFile(dataFolder() / "inc" / "ZORVEL.HTM").value_or(std::string());
    return text;
}

// The entities the manual may use inside examples and headings.
constexpr std::pair<const char*, const char*> kEntities[] = {
    {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&amp;", "&"}};

std::string unescape(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size();) {
        bool replaced = false;
        for (const auto& [entity, plain] : kEntities) {
            if (text.compare(i, std::strlen(entity), entity) != 0) continue;
            out += plain;
            i += std::strlen(entity);
            replaced = true;
            break;
        }
        if (!replaced) out += text[i++];
    }
    return out;
}

// Every "&" starts one of the entities that unescape() knows.
bool onlyKnownEntities(const std::string& text) {
    for (size_t at = text.find('&'); at != std::string::npos; at = text.find('&', at + 1)) {
        bool known = std::any_of(std::begin(kEntities), std::end(kEntities), [&](const auto& e) {
            return text.compare(at, std::strlen(e.first), e.first) == 0;
        });
        if (!known) return false;
    }
    return true;
}

std::string withoutTags(const std::string& html) {
    return unescape(std::regex_replace(html, std::regex("<[^>]*>"), ""));
}

// The text of the last h2 or h3 heading that starts before `pos`.
std::string sectionBefore(const std::string& html, size_t pos) {
    static const std::regex heading("<h[23][^>]*>([\\s\\S]*?)</h[23]>");
    std::string name = "(before the first heading)";
    for (std::sregex_iterator it(html.begin(), html.end(), heading), end; it != end; ++it) {
        if (static_cast<size_t>(it->position()) > pos) break;
        name = withoutTags((*it)[1]);
    }
    return name;
}

std::vector<Example> examplesOf(const std::string& html) {
    static const std::regex block("<pre class=\"(example[^\"]*)\">([\\s\\S]*?)</pre>");
    std::vector<Example> out;
    for (std::sregex_iterator it(html.begin(), html.end(), block), end; it != end; ++it) {
        out.push_back(
            {sectionBefore(html, it->position()), (*it)[1], (*it)[2], unescape((*it)[2])});
    }
    return out;
}

std::set<std::string> attributeValues(const std::string& html, const std::string& pattern) {
    std::regex attribute(pattern);
    std::set<std::string> values;
    for (std::sregex_iterator it(html.begin(), html.end(), attribute), end; it != end; ++it)
        values.insert((*it)[1]);
    return values;
}

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& ch : out)
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return out;
}

// Section ids: "kw-" statements ('#' spelt "sharp-"), "fn-" functions,
// "set-" DECLARE settings.
std::string statementId(std::string_view keyword) {
    std::string id = "kw-";
    for (char ch : lower(keyword))
        id += ch == '#' ? std::string("sharp-") : std::string(1, ch);
    return id;
}

std::string describe(const Example& e) {
    return "Section: " + e.section + "\n--- example ---\n" + e.source + "\n--- end ---";
}

std::string joined(const std::vector<std::string>& lines) {
    std::string out;
    for (const std::string& l : lines)
        out += l + "\n";
    return out;
}

std::vector<std::string> sourceLines(const std::string& source) {
    std::vector<std::string> lines;
    std::istringstream in(source);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

struct Build {
    CompileResult result;
    bool hexWritten = false;
};

// Compiles `source` as example.bas in a scratch folder; `assemble` runs gpasm.
Build build(const std::string& source, bool assemble) {
    TempDir dir;
    Build b{compileFile(dir.write("example.bas", source), dataFolder(), assemble)};
    b.hexWritten = fs::exists(dir.path() / "example.hex");
    return b;
}

bool builtClean(const Build& b) {
    const std::vector<std::string>& m = b.result.messages;
    bool warned = std::any_of(m.begin(), m.end(), [](const std::string& line) {
        return line.find("Warning") != std::string::npos;
    });
    return b.result.errors == 0 && !warned && b.hexWritten;
}

TEST(ManualExamples, AreCompleteProgramsInPlainText) {
    ASSERT_FALSE(manual().empty()) << "data/inc/ZORVEL.HTM is missing or empty";
    std::vector<Example> examples = examplesOf(manual());
    ASSERT_GT(examples.size(), 100u);
    for (const Example& e : examples) {
        std::vector<std::string> lines = sourceLines(e.source);
        bool hasDevice = std::any_of(lines.begin(), lines.end(), [](const std::string& l) {
            return l.rfind("DEVICE ", 0) == 0;
        });
        EXPECT_TRUE(hasDevice) << "no DEVICE line\n" << describe(e);
        EXPECT_TRUE(!lines.empty() && lines.back() == "END") << "last line is not END\n"
                                                             << describe(e);
        EXPECT_EQ(e.raw.find_first_of("<>"), std::string::npos) << "unescaped < or >\n"
                                                                << describe(e);
        EXPECT_TRUE(onlyKnownEntities(e.raw)) << "an unknown entity\n" << describe(e);
        EXPECT_TRUE(e.classes == "example" || e.planned()) << "class " << e.classes;
    }
}

TEST(ManualExamples, PlainOnesBuildWithoutErrorsOrWarnings) {
    int built = 0;
    for (const Example& e : examplesOf(manual())) {
        if (e.planned()) continue;
        Build b = build(e.source, true);
        EXPECT_TRUE(builtClean(b)) << describe(e) << "\n--- messages ---\n"
                                   << joined(b.result.messages);
        ++built;
    }
    EXPECT_GT(built, 60);
}

// The line numbers of "not supported yet" errors; false when any message is
// something else.
bool notSupportedLines(const CompileResult& r, std::set<int>& lines) {
    static const std::regex frame(
        "Error at Line \\[(\\d+)\\]\tIn file \\[example.bas\\]\t[^\t]*\t\\*\\*\\* (.*)! \\*\\*\\*");
    static const std::regex notYet("(Function )?'[A-Z#_]+' is not supported yet( in expressions)?");
    for (const std::string& m : r.messages) {
        if (m == "\tToo many COMPILER ERRORS.") continue;
        std::smatch match;
        if (!std::regex_match(m, match, frame) || !std::regex_match(match.str(2), notYet))
            return false;
        lines.insert(std::stoi(match.str(1)));
    }
    return true;
}

// Comments out every line that reports "not supported yet" until none is
// left; the rest of the example must then build. Empty string on success.
std::string checkPlanned(const std::string& source) {
    std::vector<std::string> lines = sourceLines(source);
    for (int round = 0; round <= static_cast<int>(lines.size()); ++round) {
        Build b = build(joined(lines), false);
        std::set<int> unsupported;
        if (!notSupportedLines(b.result, unsupported))
            return "an error other than 'not supported yet':\n" + joined(b.result.messages);
        if (round == 0 && unsupported.empty()) return "no 'not supported yet' error at all";
        if (unsupported.empty()) {
            Build full = build(joined(lines), true);
            if (builtClean(full)) return "";
            return "without the planned lines it does not build:\n" + joined(full.result.messages);
        }
        for (int n : unsupported) {
            if (n < 1 || n > static_cast<int>(lines.size())) return "an error on no line of it";
            lines[n - 1] = "' " + lines[n - 1];
        }
    }
    return "the planned lines never ran out";
}

TEST(ManualExamples, PlannedOnesFailOnlyBecauseTheCommandIsNotThereYet) {
    int planned = 0;
    for (const Example& e : examplesOf(manual())) {
        if (!e.planned()) continue;
        std::string problem = checkPlanned(e.source);
        EXPECT_EQ(problem, "") << describe(e);
        ++planned;
    }
    EXPECT_GT(planned, 0); // the graphic LCD commands keep theirs
}

std::vector<std::string> statementKeywords() {
    std::vector<std::string> words = {"ON_INTERRUPT"}; // the dispatcher's own first test
    for (std::string_view w : routedKeywords())
        words.emplace_back(w);
    return words;
}

TEST(ManualStructure, EveryRoutedStatementHasASection) {
    std::set<std::string> ids = attributeValues(manual(), "\\sid=\"([^\"]+)\"");
    std::vector<std::string> words = statementKeywords();
    ASSERT_GT(words.size(), 150u);
    for (const std::string& w : words)
        EXPECT_TRUE(ids.count(statementId(w))) << w << " has no section " << statementId(w);
}

TEST(ManualStructure, EveryFunctionAndSettingHasASection) {
    std::set<std::string> ids = attributeValues(manual(), "\\sid=\"([^\"]+)\"");
    std::vector<std::string> functions;
    for (const Command& cmd : commandTable())
        if (isFunctionKeyword(cmd.keyword)) functions.emplace_back(cmd.keyword);
    ASSERT_GT(functions.size(), 20u);
    for (const std::string& f : functions)
        EXPECT_TRUE(ids.count("fn-" + lower(f))) << f << " has no section fn-" << lower(f);
    for (const SettingDef& s : settingTable())
        EXPECT_TRUE(ids.count("set-" + lower(s.key))) << s.key << " has no section";
}

TEST(ManualStructure, IdsAreUniqueAndEveryLinkResolves) {
    std::set<std::string> seen;
    std::regex idPattern("\\sid=\"([^\"]+)\"");
    for (std::sregex_iterator it(manual().begin(), manual().end(), idPattern), end; it != end; ++it)
        EXPECT_TRUE(seen.insert((*it)[1]).second) << "duplicate id " << (*it)[1];
    std::set<std::string> links = attributeValues(manual(), "href=\"#([^\"]*)\"");
    EXPECT_GT(links.size(), 100u);
    for (const std::string& link : links)
        EXPECT_TRUE(seen.count(link)) << "link #" << link << " leads nowhere";
}

TEST(ManualStructure, EveryEntryHasSyntaxExplanationAndExample) {
    static const std::regex entry("<section class=\"entry\">([\\s\\S]*?)</section>");
    int entries = 0;
    for (std::sregex_iterator it(manual().begin(), manual().end(), entry), end; it != end; ++it) {
        std::string body = (*it)[1];
        std::string name = sectionBefore(manual(), it->position() + it->length());
        EXPECT_NE(body.find("<pre class=\"syntax\">"), std::string::npos) << name;
        EXPECT_NE(body.find("<p>"), std::string::npos) << name;
        EXPECT_NE(body.find("<pre class=\"example"), std::string::npos) << name;
        bool planned = body.find("<pre class=\"example planned\">") != std::string::npos;
        if (planned) {
            EXPECT_NE(body.find("later version"), std::string::npos)
                << name << ": a planned example, but the text does not say that the command "
                << "arrives in a later version";
        }
        ++entries;
    }
    EXPECT_GT(entries, 100);
}

} // namespace
} // namespace zorvel::test
