// The jobs whose instructions tools/cost.py counts under callgrind. One process runs one side of
// one job:
//
//   ravelin_cost JOB SIDE      SIDE: plugin (the Ravelin function), host (the host's own
//                              equivalent) or empty (the scaffolding alone, for loops)
//   ravelin_cost --list        each job: name, unit, units of work, whether it has a host side
//   ravelin_cost --faults JOB  minor page faults of the plug-in side's second (warm) call
//   ravelin_cost --check       each job gives the same on several threads at once as alone, and
//                              the jobs whose two sides compute the same figure agree (a test)
//
// Inputs are built before the measured call and set as "$$" variables, so the measured part is
// one calculation: ravelin_cost_measured, which callgrind collects with --toggle-collect. The
// calculation's result is printed so that the two sides can be compared.
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "sim/core/fonts.h"
#include "sim/core/text.h"
#include "sim/core/value.h"
#include "sim/session/session.h"

extern "C" __attribute__((noinline)) void ravelin_cost_measured(sim::Session* session,
                                                                const char* calculation,
                                                                sim::EvalResult* result) {
    *result = session->eval(calculation);
}

namespace {

constexpr std::size_t kCharacters = std::size_t{1} << 20;
// 10 MB of text as the host keeps it (two bytes a character).
// Smaller texts for the checks, which also run under the sanitizers and emulation.
constexpr std::size_t kCheckCharacters = std::size_t{1} << 16;
constexpr int kCheckThreads = 4;
constexpr std::size_t kFaultCharacters = std::size_t{5} << 20;
constexpr int kSqlRows = 20000;
constexpr int kSqlColumns = 5;
constexpr int kStorePairs = 10000;
constexpr int kMergeSpans = 10000;
constexpr int kMergeDistinct = 100;

struct Job {
    const char* name;
    const char* unit;
    std::size_t units;
    std::string seedSql;
    std::function<void(sim::Session&)> setUp;
    std::string plugin;
    std::string host;         // empty: no host equivalent
    std::string empty;        // empty: nothing to subtract
    bool sameResult = false;  // both sides compute the same figure
};

void setGlobal(sim::Session& session, std::u16string_view name, sim::Value value) {
    session.host().fileGlobals(u"Demo")->set(name, 1, std::move(value));
}

// ASCII with accented letters: one or two UTF-8 bytes per character, as in Western text.
std::u16string mixedLatin(std::size_t characters) {
    const std::u16string_view pattern =
        u"Grüße aus Köln, déjà vu à Zürich; Ærøskøbing, São Paulo, naïve 0123456789. ";
    std::u16string text;
    text.reserve(characters);
    while (text.size() < characters) {
        text.append(pattern.substr(0, std::min(pattern.size(), characters - text.size())));
    }
    return text;
}

std::string base64(std::string_view bytes) {
    static constexpr char kAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t n = std::min<std::size_t>(3, bytes.size() - i);
        unsigned group = static_cast<unsigned char>(bytes[i]) << 16;
        if (n > 1) group |= static_cast<unsigned char>(bytes[i + 1]) << 8;
        if (n > 2) group |= static_cast<unsigned char>(bytes[i + 2]);
        for (std::size_t k = 0; k < 4; ++k) {
            out += k <= n ? kAlphabet[(group >> (18 - 6 * k)) & 63] : '=';
        }
    }
    return out;
}

std::string utf8(std::u16string_view units) {
    std::string out;
    for (char16_t u : units) {  // the text above has no surrogates
        if (u < 0x80) {
            out += static_cast<char>(u);
        } else if (u < 0x800) {
            out += static_cast<char>(0xC0 | (u >> 6));
            out += static_cast<char>(0x80 | (u & 0x3F));
        } else {
            out += static_cast<char>(0xE0 | (u >> 12));
            out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (u & 0x3F));
        }
    }
    return out;
}

std::u16string widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

// Runs of 1 to 64 characters, each with another colour, size, face or font.
sim::Text styledText(std::size_t characters) {
    sim::Text text(mixedLatin(characters));
    const uint16_t fonts[] = {sim::fonts::idOf(u"Arial"), sim::fonts::idOf(u"Georgia"),
                              sim::fonts::idOf(u"Courier New")};
    uint32_t pos = 0;
    for (uint32_t run = 0; pos < characters; ++run) {
        const uint32_t length = std::min<uint32_t>(1 + run % 64, characters - pos);
        sim::CharStyle style;
        style.colorOn = true;
        style.color = {static_cast<uint8_t>(run * 37), static_cast<uint8_t>(run * 11), 0, 255};
        style.sizeOn = run % 3 != 0;
        style.size = static_cast<uint16_t>(10 + run % 5);
        style.fontOn = run % 4 == 1;
        style.font = fonts[run % 3];
        style.faceMask = run % 2 ? 0x1 : 0x2;  // bold or italic
        style.face = style.faceMask;
        text.setStyle(style, pos, length);
        pos += length;
    }
    return text;
}

std::u16string mergeTemplate() {
    std::u16string text;
    for (int span = 0; span < kMergeSpans; ++span) {
        text += widen("Line " + std::to_string(span) + ": <<\"Value \" & " +
                      std::to_string(span % kMergeDistinct) + " * 3>>; ");
    }
    return text;
}

std::string salesSeed() {
    return "CREATE TABLE Sales (id INTEGER PRIMARY KEY, name TEXT, amount REAL, day DATE, note "
           "TEXT);\n"
           "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
           std::to_string(kSqlRows) +
           ")\n"
           "INSERT INTO Sales SELECT i, 'Customer ' || i, i * 1.25 + 0.01, date('2000-01-01', "
           "'+' || (i % 9000) || ' days'), 'Order note for row ' || i FROM n;\n";
}

std::string storeLoop(std::string_view body) {
    return "While ( [ i = 0 ; x = 0 ; y = 0 ] ; i < " + std::to_string(kStorePairs) +
           " ; [ i = i + 1 ; " + std::string(body) + " ] ; y )";
}

std::vector<Job> jobs(std::size_t characters) {
    const std::string query = "\"SELECT id, name, amount, day, note FROM Sales ORDER BY id\"";
    return {
        {"ExecuteSQL",
         "cell",
         std::size_t{kSqlRows} * kSqlColumns,
         salesSeed(),
         {},
         "Length ( Ravelin_ExecuteSQL ( " + query + " ) )",
         "Length ( ExecuteSQL ( " + query + " ; \"\" ; \"\" ) )",
         "",
         true},
        {"store pair",
         "pair",
         kStorePairs,
         "",
         {},
         storeLoop("x = Ravelin_SetGlobal ( \"k\" ; i ) ; y = Ravelin_GetGlobal ( \"k\" )"),
         storeLoop("$$k = i ; y = $$k"),
         storeLoop("x = i ; y = x"),
         true},
        {"Encode", "character", characters, "",
         [characters](sim::Session& s) {
             setGlobal(s, u"$$t", sim::Value::text(mixedLatin(characters)));
         },
         "Length ( Ravelin_Encode ( \"UTF-8 to Base64\" ; $$t ) )",
         "Length ( Substitute ( Base64Encode ( $$t ) ; Char ( 13 ) & Char ( 10 ) ; \"\" ) )", "",
         true},
        {"Decode", "character", characters, "",
         [characters](sim::Session& s) {
             setGlobal(s, u"$$b", sim::Value::text(widen(base64(utf8(mixedLatin(characters))))));
         },
         "Length ( Ravelin_Decode ( \"Base64 to UTF-8\" ; $$b ) )",
         "Length ( TextDecode ( Base64Decode ( $$b ) ; \"utf-8\" ) )", "", true},
        {"GetAsHTML", "character", characters, "",
         [characters](sim::Session& s) {
             setGlobal(s, u"$$s", sim::Value::text(styledText(characters)));
         },
         "Length ( Ravelin_GetAsHTML ( $$s ) )", "Length ( GetAsCSS ( $$s ) )", ""},
        {"MergeText", "span", kMergeSpans, "",
         [](sim::Session& s) { setGlobal(s, u"$$m", sim::Value::text(mergeTemplate())); },
         "Length ( Ravelin_MergeText ( $$m ) )", "", ""},
    };
}

const Job* findJob(const std::vector<Job>& all, std::string_view name) {
    for (const Job& job : all) {
        if (name == job.name) return &job;
    }
    return nullptr;
}

sim::SessionOptions optionsFor(const Job& job) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    o.seedSql = job.seedSql;
    return o;
}

int list() {
    for (const Job& job : jobs(kCharacters)) {
        std::printf("%s\t%s\t%zu\t%s\t%s\t%s\n", job.name, job.unit, job.units,
                    job.host.empty() ? "-" : "host", job.empty.empty() ? "-" : "empty",
                    job.sameResult ? "same" : "-");
    }
    return 0;
}

int run(const Job& job, std::string_view side) {
    const std::string& calculation = side == "plugin" ? job.plugin
                                     : side == "host" ? job.host
                                                      : job.empty;
    if (calculation.empty()) {
        std::fprintf(stderr, "ravelin_cost: %s has no %.*s side\n", job.name,
                     static_cast<int>(side.size()), side.data());
        return 2;
    }
    sim::Session session(optionsFor(job));
    if (job.setUp) job.setUp(session);
    sim::EvalResult result;
    ravelin_cost_measured(&session, calculation.c_str(), &result);
    std::printf("%s\n", result.text.c_str());
    return result.error == 0 ? 0 : 1;
}

// The calculation without its Length ( ... ), so that a check compares the whole result.
std::string wholeResultOf(const std::string& calculation) {
    const std::string_view head = "Length ( ", tail = " )";
    if (!calculation.starts_with(head) || !calculation.ends_with(tail)) return calculation;
    return calculation.substr(head.size(), calculation.size() - head.size() - tail.size());
}

// The calculation for one of several threads: the store's key is the thread's own, so that no
// thread reads a value another one set.
std::string forThread(std::string calculation, int thread) {
    const std::string shared = "\"k\"", own = "\"k" + std::to_string(thread) + "\"";
    for (std::size_t at = calculation.find(shared); at != std::string::npos;
         at = calculation.find(shared, at + own.size())) {
        calculation.replace(at, shared.size(), own);
    }
    return calculation;
}

// Every job's calculation run on several threads at once gives what it gives alone.
bool agreesOnThreads(sim::Session& session, const Job& job) {
    const std::string alone = session.eval(wholeResultOf(job.plugin)).text;
    std::vector<std::string> answers(kCheckThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kCheckThreads; ++t) {
        threads.emplace_back([&, t] {
            answers[static_cast<std::size_t>(t)] =
                session.eval(forThread(wholeResultOf(job.plugin), t)).text;
        });
    }
    for (std::thread& t : threads) t.join();
    bool agree = true;
    for (const std::string& answer : answers) agree = agree && answer == alone;
    std::printf("%s on %d threads: %s\n", job.name, kCheckThreads, agree ? "agree" : "DIFFER");
    return agree;
}

int check() {
    int failures = 0;
    for (const Job& job : jobs(kCheckCharacters)) {
        sim::Session session(optionsFor(job));
        if (job.setUp) job.setUp(session);
        if (!agreesOnThreads(session, job)) ++failures;
        if (!job.sameResult) continue;
        const sim::EvalResult plugin = session.eval(job.plugin);
        const sim::EvalResult host = session.eval(job.host);
        const bool agree = plugin.error == 0 && host.error == 0 && plugin.text == host.text;
        std::printf("%s: %s %s / %s\n", job.name, agree ? "agree" : "DIFFER", plugin.text.c_str(),
                    host.text.c_str());
        failures += agree ? 0 : 1;
    }
    return failures == 0 ? 0 : 1;
}

long minorFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

int faults(const Job& job) {
    sim::Session session(optionsFor(job));
    if (job.setUp) job.setUp(session);
    sim::EvalResult result = session.eval(job.plugin);  // the cold call
    const long before = minorFaults();
    result = session.eval(job.plugin);
    std::printf("%ld\n", minorFaults() - before);
    return result.error == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--list") == 0) return list();
    if (argc == 2 && std::strcmp(argv[1], "--check") == 0) return check();
    if (argc == 3 && std::strcmp(argv[1], "--faults") == 0) {
        const std::vector<Job> all = jobs(kFaultCharacters);
        const Job* job = findJob(all, argv[2]);
        return job ? faults(*job) : 2;
    }
    if (argc == 3) {
        const std::vector<Job> all = jobs(kCharacters);
        if (const Job* job = findJob(all, argv[1])) return run(*job, argv[2]);
    }
    std::fprintf(stderr,
                 "usage: ravelin_cost --list | --check | --faults JOB | JOB plugin|host|empty\n");
    return 2;
}
