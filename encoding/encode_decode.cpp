// Ravelin_Encode ( "UTF-8 to Base64" ; text ) and Ravelin_Decode ( "Base64 to UTF-8" ; text ).
#include <cstring>
#include <string>
#include <vector>

#include "encoding/base64.h"
#include "encoding/functions.h"
#include "fmlib/convert.h"
#include "fmlib/text_utils.h"
#include "frame/answers.h"
#include "frame/exception_frame.h"

namespace {

const char* encodeKeywords[] = {"UTF-8 to Base64"};
const char* decodeKeywords[] = {"Base64 to UTF-8"};

// The argument count and the keyword; false once the error is answered.
bool checkArguments(const fmx::DataVect& args, const char** keywords, unsigned count,
                    const fmx::ExprEnv& env, fmx::Data& result) {
    if (args.Size() < 2) {
        rvl::AnswerBadParameters("Not enough parameters", env, result);
        return false;
    }
    if (args.Size() > 2) {
        rvl::AnswerBadParameters("Too many parameters", env, result);
        return false;
    }
    if (fmlib::FindFMTextInArray(args.AtAsText(0), keywords, count) < 0) {
        rvl::AnswerBadParameters("Unrecognized selector", env, result);
        return false;
    }
    return true;
}

// The text's bytes in `encoding`, fetched into `perUnit` bytes per UTF-16 unit and one more.
std::vector<char> bytesOf(const fmx::Text& text, std::size_t perUnit, fmx::int32 encoding) {
    std::vector<char> buffer(std::size_t{text.GetSize()} * perUnit + 1, '\0');
    if (buffer.size() > 1) {
        text.GetBytes(buffer.data(), static_cast<fmx::uint32>(buffer.size()), 0, fmx::kSize_End,
                      encoding);
    }
    return buffer;
}

}  // namespace

fmx::errcode Ravelin_Encode(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
                            fmx::Data& result) {
    return rvl::RunInExceptionFrame(env, result, [&] {
        if (!checkArguments(args, encodeKeywords, 1, env, result)) return;
        const std::vector<char> utf8 = bytesOf(args.AtAsText(1), 4, fmx::kEncoding_UTF8);
        fmx::TextUniquePtr output;
        if (utf8.size() > 1) {
            // A zero byte (a NUL character) ends what is encoded.
            const std::string encoded = B64_Encode({utf8.data(), std::strlen(utf8.data())});
            output->Assign(encoded, fmx::kEncoding_Native);
        }
        fmlib::SetResultText(result, *output);
    });
}

fmx::errcode Ravelin_Decode(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
                            fmx::Data& result) {
    return rvl::RunInExceptionFrame(env, result, [&] {
        if (!checkArguments(args, decodeKeywords, 1, env, result)) return;
        const fmx::Text& text = args.AtAsText(1);
        const std::size_t units = text.GetSize();
        // Base64 is ASCII, one byte per unit; anything else read in its place decodes as zero
        // bits like any other character outside the alphabet.
        const std::vector<char> characters = bytesOf(text, 1, fmx::kEncoding_Native);
        fmx::TextUniquePtr output;
        if (units > 0) {
            const std::string decoded = B64_Decode({characters.data(), units});
            if (!decoded.empty()) output->Assign(decoded, fmx::kEncoding_UTF8);
        }
        fmlib::SetResultText(result, *output);
    });
}
