#include "sim/shell/input.h"

#include <histedit.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <iostream>
#include <string>

#include "sim/shell/commands.h"

namespace fmsim {

bool continues(std::string_view calc) {
    int depth = 0;
    bool inText = false;
    bool inComment = false;
    for (std::size_t i = 0; i < calc.size(); ++i) {
        const char c = calc[i];
        const char next = i + 1 < calc.size() ? calc[i + 1] : '\0';
        if (inComment) {
            if (c == '*' && next == '/') {
                inComment = false;
                ++i;
            }
        } else if (inText) {
            if (c == '\\') {
                ++i;  // an escaped character, the quotation mark included
            } else if (c == '"') {
                inText = false;
            }
        } else if (c == '"') {
            inText = true;
        } else if (c == '/' && next == '*') {
            inComment = true;
            ++i;
        } else if (c == '/' && next == '/') {
            while (i < calc.size() && calc[i] != '\r' && calc[i] != '\n') ++i;
        } else if (c == '(' || c == '[') {
            ++depth;
        } else if (c == ')' || c == ']') {
            --depth;
        }
    }
    return inText || inComment || depth > 0;
}

bool isCommand(std::string_view line) {
    const std::size_t start = line.find_first_not_of(" \t");
    if (start == std::string_view::npos || line[start] != '.' || start + 1 >= line.size()) {
        return false;
    }
    const char c = line[start + 1];
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::string historyPath() {
    if (const char* path = std::getenv("FMSIM_HISTORY")) return path;
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home == '\0') return {};
    return std::string(home) + "/.fmsim_history";
}

void Pending::add(const std::string& line) {
    if (!calc.empty()) {
        calc += '\r';
        typed += '\n';
    }
    calc += line;
    typed += line;
}

void Pending::clear() {
    calc.clear();
    typed.clear();
}

Fed feed(const InputActions& actions, Pending& pending, std::string line) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (pending.empty()) {
        if (line.find_first_not_of(" \t") == std::string::npos) return {};
        if (isCommand(line)) return {actions.command(line), line};
    } else if (isCommand(line) && dropsOpenCalculation(line)) {
        pending.clear();
        return {!quits(line), {}};
    }
    pending.add(line);
    if (continues(pending.calc)) return {};
    actions.evaluate(pending.calc);
    std::string typed = std::move(pending.typed);
    pending.clear();
    return {true, std::move(typed)};
}

namespace {

constexpr int kIdleIntervalMs = 100;
constexpr wchar_t kInterruptKey = 3;  // Ctrl-C

void readPlain(const InputActions& actions) {
    Pending pending;
    std::string line;
    while (std::getline(std::cin, line)) {
        if (!feed(actions, pending, std::move(line)).more) return;
        actions.idle();
    }
    // Input that ends inside an open bracket still gets its answer (an error that says so).
    if (!pending.empty()) actions.evaluate(pending.calc);
}

struct Terminal {
    const InputActions* actions;
    Pending pending;
    bool dropped = false;  // Ctrl-C: the line being typed and the open calculation go
};

Terminal* terminalOf(EditLine* el) {
    void* data = nullptr;
    el_get(el, EL_CLIENTDATA, &data);
    return static_cast<Terminal*>(data);
}

char* prompt(EditLine* el) {
    static char main[] = "fmsim> ";
    static char more[] = "   ...> ";
    return terminalOf(el)->pending.empty() ? main : more;
}

// Reads a byte, or -1 at the end of the input or an error.
int readByte() {
    for (;;) {
        unsigned char b = 0;
        const ssize_t n = ::read(STDIN_FILENO, &b, 1);
        if (n == 1) return b;
        if (n < 0 && errno == EINTR) continue;
        return -1;
    }
}

// libedit's character source: waits for a key with idle calls in between (so that scripts
// that fall due while the user types still run), then decodes one UTF-8 character.
int readCharacter(EditLine* el, wchar_t* out) {
    Terminal* t = terminalOf(el);
    for (;;) {
        // Ctrl-C reaches the shell as a signal (during the wait or an idle call's scripts)
        // or, with the terminal's signals off, as the key itself: both drop the line.
        if (t->actions->takeInterrupt()) {
            *out = kInterruptKey;
            return 1;
        }
        pollfd p{STDIN_FILENO, POLLIN, 0};
        const int ready = ::poll(&p, 1, kIdleIntervalMs);
        if (ready < 0 && errno == EINTR) continue;
        if (ready < 0) return -1;
        if (ready == 0) {
            if (t->actions->idle()) el_set(el, EL_REFRESH);
            continue;
        }
        break;
    }
    const int lead = readByte();
    if (lead < 0) return 0;
    int more = 0;
    char32_t c = static_cast<char32_t>(lead);
    if (lead >= 0xF0 && lead < 0xF8) {
        more = 3;
        c = lead & 0x07;
    } else if (lead >= 0xE0) {
        more = lead < 0xF0 ? 2 : 0;
        c = lead < 0xF0 ? lead & 0x0F : 0xFFFD;
    } else if (lead >= 0xC0) {
        more = 1;
        c = lead & 0x1F;
    } else if (lead >= 0x80) {
        c = 0xFFFD;
    }
    for (int i = 0; i < more; ++i) {
        const int b = readByte();
        if (b < 0 || (b & 0xC0) != 0x80) {
            c = 0xFFFD;
            break;
        }
        c = c << 6 | static_cast<char32_t>(b & 0x3F);
    }
    *out = static_cast<wchar_t>(c);
    return 1;
}

// The line without its final line feed; a calculation recalled whole from the history keeps
// the line feeds between its lines.
std::string utf8Of(const wchar_t* line, int count) {
    std::string out;
    if (count > 0 && line[count - 1] == L'\n') --count;
    for (int i = 0; i < count; ++i) {
        const auto c = static_cast<uint32_t>(line[i]);
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | c >> 6);
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | c >> 12);
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | c >> 18);
            out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

// libedit shows and reads characters beyond ASCII through the C library's locale.
void useUtf8Characters() {
    const char* current = std::setlocale(LC_CTYPE, "");
    const std::string name = current ? current : "";
    if (name.find("UTF-8") == std::string::npos && name.find("utf8") == std::string::npos) {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
}

unsigned char dropLine(EditLine* el, int) {
    terminalOf(el)->dropped = true;
    return CC_NEWLINE;
}

// The history of whole calculations, kept in historyPath().
class History {
public:
    History() : history_(history_winit()), path_(historyPath()) {
        history_w(history_, &event_, H_SETSIZE, kHistoryEntries);
        history_w(history_, &event_, H_SETUNIQUE, 1);
        if (!path_.empty()) history_w(history_, &event_, H_LOAD, path_.c_str());
    }
    ~History() { history_wend(history_); }
    History(const History&) = delete;
    History& operator=(const History&) = delete;

    HistoryW* handle() { return history_; }

    void add(const std::string& typed) {
        if (typed.empty() || typed.size() > kMaxHistoryEntryBytes) return;
        const std::wstring entry = wideOf(typed);
        history_w(history_, &event_, H_ENTER, entry.c_str());
        if (!path_.empty()) history_w(history_, &event_, H_SAVE, path_.c_str());
    }

private:
    static std::wstring wideOf(const std::string& utf8) {
        std::wstring out;
        std::mbstate_t state{};
        const char* from = utf8.data();
        const char* end = from + utf8.size();
        while (from < end) {
            wchar_t c = 0;
            const std::size_t n =
                std::mbrtowc(&c, from, static_cast<std::size_t>(end - from), &state);
            if (n == 0 || n > static_cast<std::size_t>(end - from)) {
                out += L'\uFFFD';
                state = {};
                ++from;
                continue;
            }
            out += c;
            from += n;
        }
        return out;
    }

    HistoryW* history_;
    HistEventW event_{};
    std::string path_;
};

void readTerminal(const InputActions& actions) {
    useUtf8Characters();
    Terminal state{&actions, {}};
    EditLine* el = el_init("fmsim", stdin, actions.terminalOut, actions.terminalErr);
    if (el == nullptr) {
        readPlain(actions);
        return;
    }
    History history;
    el_set(el, EL_CLIENTDATA, &state);
    el_set(el, EL_EDITOR, "emacs");
    el_set(el, EL_PROMPT, prompt);
    el_wset(el, EL_HIST, history_w, history.handle());
    el_set(el, EL_GETCFN, readCharacter);
    el_set(el, EL_SIGNAL, 1);
    // The wide forms: libedit keeps these names as given, where the narrow ones copy them and
    // never free the copies.
    el_wset(el, EL_ADDFN, L"fmsim-drop", L"drop the line and the open calculation", dropLine);
    el_wset(el, EL_BIND, L"^C", L"fmsim-drop", nullptr);

    for (;;) {
        int count = 0;
        const wchar_t* read = el_wgets(el, &count);
        if (state.dropped) {
            state.dropped = false;
            state.pending.clear();
            std::fputs("^C\n", actions.terminalOut);
            std::fflush(actions.terminalOut);
            continue;
        }
        if (read == nullptr || count <= 0) break;
        // A calculation recalled from the history comes back with its lines.
        const std::string text = utf8Of(read, count);
        bool more = true;
        for (std::size_t start = 0; more && start <= text.size();) {
            std::size_t end = text.find('\n', start);
            if (end == std::string::npos) end = text.size();
            const Fed fed = feed(actions, state.pending, text.substr(start, end - start));
            history.add(fed.finished);
            more = fed.more;
            start = end + 1;
        }
        if (!more) break;
    }
    if (!state.pending.empty()) actions.evaluate(state.pending.calc);
    std::fputs("\n", actions.terminalOut);
    std::fflush(actions.terminalOut);
    el_end(el);
}

}  // namespace

void readInput(const InputActions& actions, bool terminal) {
    if (terminal) {
        readTerminal(actions);
    } else {
        readPlain(actions);
    }
}

}  // namespace fmsim
