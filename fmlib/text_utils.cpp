#include "fmlib/text_utils.h"

#include <algorithm>
#include <cctype>

namespace {

bool equalsWord(const fmx::Text& text, const char* word) {
    fmx::TextUniquePtr other;
    other->Assign(word, fmx::kEncoding_Native);
    return text == *other;
}

}  // namespace

namespace fmlib {

int FindFMTextInArray(const fmx::Text& text, const char** words, unsigned count) {
    fmx::TextUniquePtr wanted;
    wanted->SetText(text, 0, fmx::kSize_End);
    wanted->Lowercase();
    fmx::TextUniquePtr word;
    for (unsigned i = 0; i < count; ++i) {
        word->Assign(words[i], fmx::kEncoding_Native);
        word->Lowercase();
        if (*word == *wanted) return static_cast<int>(i);
    }
    return -1;
}

}  // namespace fmlib

bool isEmpty(const fmx::Text& text) { return text.GetSize() == 0; }
bool isAll(const fmx::Text& text) { return equalsWord(text, "all"); }
bool isSpace(const fmx::Text& text) { return equalsWord(text, " "); }

std::string toLower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

std::vector<std::string> explode(const std::string& s, char delimiter) {
    std::vector<std::string> pieces;
    fmlib::eachPiece(s, delimiter, [&](std::string_view piece) {
        pieces.emplace_back(piece);
        return true;
    });
    return pieces;
}
