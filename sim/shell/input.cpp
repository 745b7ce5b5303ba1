#include "sim/shell/input.h"

#include <histedit.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

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

namespace {

constexpr int kIdleIntervalMs = 100;

// Lines joined into one calculation: a line break inside a calculation is a return.
struct Pending {
    std::string calc;

    bool empty() const { return calc.empty(); }
    void add(const std::string& line) {
        if (!calc.empty()) calc += '\r';
        calc += line;
    }
};

// Feeds one line; returns false when the input should end.
bool feed(const InputActions& actions, Pending& pending, std::string line) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (pending.empty()) {
        if (line.find_first_not_of(" \t") == std::string::npos) return true;
        if (isCommand(line)) return actions.command(line);
    }
    pending.add(line);
    if (continues(pending.calc)) return true;
    actions.evaluate(pending.calc);
    pending.calc.clear();
    return true;
}

void readPlain(const InputActions& actions) {
    Pending pending;
    std::string line;
    while (std::getline(std::cin, line)) {
        if (!feed(actions, pending, std::move(line))) return;
        actions.idle();
    }
    // Input that ends inside an open bracket still gets its answer (an error that says so).
    if (!pending.empty()) actions.evaluate(pending.calc);
}

struct Terminal {
    const InputActions* actions;
    Pending pending;
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

std::string utf8Of(const wchar_t* line, int count) {
    std::string out;
    for (int i = 0; i < count; ++i) {
        const auto c = static_cast<uint32_t>(line[i]);
        if (c == L'\n') continue;
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

void readTerminal(const InputActions& actions) {
    useUtf8Characters();
    Terminal state{&actions, {}};
    EditLine* el = el_init("fmsim", stdin, stdout, stderr);
    if (el == nullptr) {
        readPlain(actions);
        return;
    }
    HistoryW* history = history_winit();
    HistEventW event;
    history_w(history, &event, H_SETSIZE, 1000);
    history_w(history, &event, H_SETUNIQUE, 1);
    const std::string path = historyPath();
    if (!path.empty()) history_w(history, &event, H_LOAD, path.c_str());
    el_set(el, EL_CLIENTDATA, &state);
    el_set(el, EL_EDITOR, "emacs");
    el_set(el, EL_PROMPT, prompt);
    el_wset(el, EL_HIST, history_w, history);
    el_set(el, EL_GETCFN, readCharacter);
    el_set(el, EL_SIGNAL, 1);

    for (;;) {
        int count = 0;
        const wchar_t* read = el_wgets(el, &count);
        if (read == nullptr || count <= 0) break;
        std::string line = utf8Of(read, count);
        if (line.find_first_not_of(" \t") != std::string::npos) {
            std::wstring entry(read, read + count);
            if (entry.back() == L'\n') entry.pop_back();
            history_w(history, &event, H_ENTER, entry.c_str());
            if (!path.empty()) history_w(history, &event, H_SAVE, path.c_str());
        }
        if (!feed(actions, state.pending, std::move(line))) break;
    }
    if (!state.pending.empty()) actions.evaluate(state.pending.calc);
    std::cout << '\n' << std::flush;
    el_end(el);
    history_wend(history);
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
