// Ravelin_Encode ( "UTF-8 to Base64" ; text ) and Ravelin_Decode ( "Base64 to UTF-8" ; text ).
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "encoding/base64.h"
#include "encoding/functions.h"
#include "fmlib/convert.h"
#include "fmlib/text_utils.h"
#include "frame/answers.h"

namespace {

const char* encodeKeywords[] = {"UTF-8 to Base64"};
const char* decodeKeywords[] = {"Base64 to UTF-8"};

// The argument count and the keyword; false once the error is answered.
bool checkArguments(const rvl::Arguments& args, const char** keywords, unsigned count,
                    const fmx::ExprEnv& env, fmx::Data& result) {
    if (args.count() < 2) {
        rvl::AnswerBadParameters("Not enough parameters", env, result);
        return false;
    }
    if (args.count() > 2) {
        rvl::AnswerBadParameters("Too many parameters", env, result);
        return false;
    }
    if (fmlib::FindFMTextInArray(args.text(0), keywords, count) < 0) {
        rvl::AnswerBadParameters("Unrecognized selector", env, result);
        return false;
    }
    return true;
}

// The text's bytes in `encoding`, fetched into `perUnit` bytes per UTF-16 unit and one more,
// up to the first zero byte. Only what the host writes is touched: the buffer of a long text
// is mostly never used.
std::string_view bytesOf(const fmx::Text& text, std::size_t perUnit, fmx::int32 encoding,
                         std::unique_ptr<char[]>& buffer) {
    const std::size_t size = std::size_t{text.GetSize()} * perUnit + 1;
    buffer = std::make_unique_for_overwrite<char[]>(size);
    buffer[0] = '\0';
    if (size > 1) {
        text.GetBytes(buffer.get(), static_cast<fmx::uint32>(size), 0, fmx::kSize_End, encoding);
    }
    return {buffer.get(), std::strlen(buffer.get())};
}

}  // namespace

void body::Ravelin_Encode(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result) {
    if (!checkArguments(args, encodeKeywords, 1, env, result)) return;
    const fmx::Text& text = args.text(1);
    std::unique_ptr<char[]> buffer;
    // A zero byte (a NUL character) ends what is encoded.
    const std::string_view utf8 = bytesOf(text, 4, fmx::kEncoding_UTF8, buffer);
    fmx::TextUniquePtr output;
    if (text.GetSize() > 0) {
        // Base64 is ASCII, the same in every encoding that keeps ASCII: the native one will do.
        output->Assign(B64_Encode(utf8), fmx::kEncoding_Native);
    }
    fmlib::SetResultText(result, *output);
}

void body::Ravelin_Decode(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result) {
    if (!checkArguments(args, decodeKeywords, 1, env, result)) return;
    const fmx::Text& text = args.text(1);
    const std::size_t units = text.GetSize();
    // Base64 is ASCII, one byte per unit; anything else read in its place decodes as zero
    // bits like any other character outside the alphabet.
    std::unique_ptr<char[]> buffer;
    const std::size_t read = bytesOf(text, 1, fmx::kEncoding_Native, buffer).size();
    fmx::TextUniquePtr output;
    if (units > 0) {
        // Past a zero byte the buffer holds zeros, as the host wrote them.
        std::fill(buffer.get() + read, buffer.get() + units + 1, '\0');
        const std::string decoded = B64_Decode({buffer.get(), units});
        if (!decoded.empty()) output->Assign(decoded, fmx::kEncoding_UTF8);
    }
    fmlib::SetResultText(result, *output);
}
