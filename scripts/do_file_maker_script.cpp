#include "scripts/do_file_maker_script.h"

#include "fmlib/convert.h"
#include "frame/answers.h"
#include "frame/last_error.h"
#include "scripts/functions.h"
#include "scripts/host_script.h"
#include "scripts/platform_log.h"

namespace {

constexpr fmx::errcode kWrongTimestamp = -1001;
constexpr double kSecondsInADay = 86400.0;
constexpr char kScriptNamesCalculation[] = "ScriptNames( \"\" )";
constexpr fmx::uint32 kFileNamePosition = 14;  // between the two quotation marks
constexpr char kQueueFull[] =
    "Too many scheduled scripts are waiting (at most 10000, with 16 MB of names and parameters)";

// The evaluation's error is not looked at: a failed one leaves the name empty.
fmx::TextUniquePtr callingFileName(const fmx::ExprEnv& env) {
    fmx::TextUniquePtr name;
    fmlib::EvaluateFileName(env, fmlib::kFileNameCalculation, *name);
    return name;
}

// Empty, or argument 2 as text, so that a number or a date reaches the script as its text.
fmx::DataUniquePtr scriptParameter(const fmx::DataVect& args) {
    fmx::DataUniquePtr parameter;
    if (args.Size() >= 2) fmlib::SetResultText(*parameter, args.AtAsText(1));
    return parameter;
}

fmx::TextUniquePtr scriptName(const fmx::DataVect& args) {
    fmx::TextUniquePtr name;
    name->SetText(args.AtAsText(0));
    return name;
}

// Argument 3 read as a timestamp, minus now, in seconds.
double secondsAhead(const fmx::DataVect& args) {
    fmx::FixPtUniquePtr then, now, difference;
    args.AtAsTimeStamp(2).GetSecondsSinceEpoch(*then);
    fmx::DateTimeUniquePtr clock;
    clock->Now();
    clock->GetSecondsSinceEpoch(*now);
    then->Subtract(*now, *difference);
    return difference->AsFloat();
}

fmx::TextUniquePtr framedByReturns(const fmx::Text& text) {
    const fmx::TextUniquePtr cr("\r");
    fmx::TextUniquePtr framed;
    framed->SetText(*cr);
    framed->AppendText(text);
    framed->AppendText(*cr);
    return framed;
}

}  // namespace

bool IsScriptNameValidInFile(const fmx::Text& scriptName, const fmx::Text& fileName,
                             const fmx::ExprEnv& env) {
    const fmx::TextUniquePtr calculation(kScriptNamesCalculation);
    calculation->InsertText(fileName, kFileNamePosition);
    fmx::DataUniquePtr names;
    if (env.Evaluate(*calculation, *names) != 0) return false;
    const fmx::TextUniquePtr haystack = framedByReturns(names->GetAsText());
    const fmx::TextUniquePtr needle = framedByReturns(scriptName);
    return haystack->FindIgnoringCase(*needle, 0) != fmx::kSize_Invalid;
}

fmx::int16 runFMScript(const fmx::Text& scriptName, const fmx::Data& parameter,
                       const fmx::ExprEnv& env) {
    const fmx::TextUniquePtr fileName = callingFileName(env);
    if (!IsScriptNameValidInFile(scriptName, *fileName, env)) return rvl::kBadParameters;
    startHostScript(*fileName, scriptName, parameter);
    return 0;
}

fmx::errcode doFileMakerScript(const fmx::ExprEnv& env, const fmx::DataVect& args,
                               fmx::Data& result, Ravelin& scheduler) {
    // A call that succeeds leaves no earlier error behind.
    rvl::SetLastError(rvl::kNoError, "", env);
    const fmx::uint32 count = args.Size();
    if (count == 0 || count > 3) {
        rvl::AnswerBadParameters(count == 0 ? "Not enough parameters" : "Too many parameters", env,
                                 result);
        return 0;
    }

    const fmx::DataUniquePtr parameter = scriptParameter(args);
    const fmx::TextUniquePtr name = scriptName(args);
    if (count < 3) {
        const fmx::int16 outcome = runFMScript(*name, *parameter, env);
        if (outcome == rvl::kBadParameters) {
            rvl::SetLastError(rvl::kBadParameters, "Invalid script name", env);
        }
        fmlib::FMErrCode2FMData(outcome, result);
        return 0;
    }

    const double ahead = secondsAhead(args);
    if (ahead > kSecondsInADay) {
        // Deliberately code 0: the failure shows only in what the host gets back.
        rvl::SetLastError(rvl::kNoError, "Wrong timestamp", env);
        return kWrongTimestamp;
    }
    // A plain number is an early timestamp and lands here as seconds of delay; so does a past
    // timestamp, as a delay so long that the script never runs.
    const double delay = ahead < 0.0 ? args.AtAsNumber(2).AsFloat() : ahead;
    scheduler.log(delayLine(delay));

    const fmx::TextUniquePtr fileName = callingFileName(env);
    if (!IsScriptNameValidInFile(*name, *fileName, env)) {
        rvl::AnswerBadParameters("Invalid script name", env, result);
        return 0;
    }
    if (!scheduler.scheduleScript(fmlib::StringFromFmText(*name),
                                  fmlib::StringFromFmText(*fileName),
                                  fmlib::StringFromFmText(parameter->GetAsText()), delay)) {
        rvl::AnswerError(rvl::kGenericError, kQueueFull, env, result);
        return 0;
    }
    fmlib::FMErrCode2FMData(rvl::kNoError, result);
    return 0;
}

fmx::errcode body::Ravelin_DoFileMakerScript(const fmx::ExprEnv& env, const rvl::Arguments& args,
                                       fmx::Data& result) {
    return doFileMakerScript(env, args.vect(), result, Ravelin::instance());
}
