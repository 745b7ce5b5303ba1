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

// Units read per host call: the slice's UTF-8 stays in the cache while it is encoded.
constexpr fmx::uint32 kSliceUnits = 32768;
// A unit takes at most three UTF-8 bytes (a surrogate pair four for its two units).
constexpr std::size_t kBytesPerUnit = 3;

bool isHighSurrogateAt(const fmx::Text& text, fmx::uint32 position) {
    fmx::uint16 unit = 0;
    text.GetUnicode(&unit, position, 1);
    return unit >= 0xD800 && unit <= 0xDBFF;
}

// The Base64 of the text's UTF-8 up to its first zero byte (a NUL character), read a slice at
// a time into a small buffer and written into `out`, which has room for four characters per
// unit. A slice never ends between the two halves of a surrogate pair, which the host would
// otherwise convert one by one; the 0-2 bytes that do not fill a group move to the next slice.
// Answers the end of the characters written.
char* encodeText(const fmx::Text& text, fmx::uint32 units, char* out) {
    const auto slice = std::make_unique_for_overwrite<char[]>(kSliceUnits * kBytesPerUnit + 2);
    std::size_t carried = 0;
    std::size_t total = 0;
    for (fmx::uint32 position = 0; position < units;) {
        fmx::uint32 take = std::min(kSliceUnits, units - position);
        if (position + take < units && isHighSurrogateAt(text, position + take - 1)) --take;
        char* const fresh = slice.get() + carried;
        const std::size_t got =
            text.GetBytesEx(fresh, static_cast<fmx::uint32>(take * kBytesPerUnit), position, take,
                            fmx::kEncoding_UTF8);
        const auto* zero = static_cast<const char*>(std::memchr(fresh, 0, got));
        const std::size_t usable = zero ? static_cast<std::size_t>(zero - fresh) : got;
        total += usable;
        const std::string_view bytes(slice.get(), carried + usable);
        const std::size_t done = B64_EncodeGroups(bytes, out);
        carried = bytes.size() - done;
        std::memmove(slice.get(), slice.get() + done, carried);
        if (zero) break;
        position += take;
    }
    B64_EncodeRest({slice.get(), carried}, total == 0, out);
    return out;
}

}  // namespace

void body::Ravelin_Encode(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result) {
    if (!checkArguments(args, encodeKeywords, 1, env, result)) return;
    const fmx::Text& text = args.text(1);
    const fmx::uint32 units = text.GetSize();
    fmx::TextUniquePtr output;
    if (units > 0) {
        // Only the characters written are touched: most of a long text's room is never used.
        const auto base64 = std::make_unique_for_overwrite<char[]>(std::size_t{units} * 4 + 4);
        const char* const end = encodeText(text, units, base64.get());
        // Base64 is ASCII, the same in every encoding that keeps ASCII: the native one will do.
        output->AssignWithLength(base64.get(), static_cast<fmx::uint32>(end - base64.get()),
                                 fmx::kEncoding_Native);
    }
    fmlib::SetResultText(result, *output);
}

void body::Ravelin_Decode(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result) {
    if (!checkArguments(args, decodeKeywords, 1, env, result)) return;
    const fmx::Text& text = args.text(1);
    const std::size_t units = text.GetSize();
    fmx::TextUniquePtr output;
    if (units > 0) {
        // Base64 is ASCII, one byte per unit; anything else read in its place decodes as zero
        // bits like any other character outside the alphabet. The bytes are decoded in place:
        // three per group of four never pass units + 3.
        const auto buffer = std::make_unique_for_overwrite<char[]>(units + 3);
        buffer[0] = '\0';
        text.GetBytes(buffer.get(), static_cast<fmx::uint32>(units + 1), 0, fmx::kSize_End,
                      fmx::kEncoding_Native);
        // Past a zero byte (a NUL character, or the end of what the host could fit) the
        // characters count as zeros.
        const std::size_t read = std::strlen(buffer.get());
        std::fill(buffer.get() + read, buffer.get() + units, '\0');
        const std::size_t count = B64_DecodeInto({buffer.get(), units}, buffer.get());
        if (count > 0) {
            output->AssignWithLength(buffer.get(), static_cast<fmx::uint32>(count),
                                     fmx::kEncoding_UTF8);
        }
    }
    fmlib::SetResultText(result, *output);
}
