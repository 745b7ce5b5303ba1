#include "entry/function_table.h"

#include "encoding/functions.h"
#include "globals/functions.h"
#include "html/functions.h"
#include "info/functions.h"
#include "merge/functions.h"
#include "net/functions.h"
#include "regex/functions.h"
#include "scripts/functions.h"
#include "sql/functions.h"

namespace {

using rvl::Answer;
using rvl::Frame;

constexpr fmx::uint32 kFlags = 0xFF01;  // every device, shown in every calculation dialog

template <auto Body, Frame F>
constexpr FunctionRow row(short id, const char* prototype, short minArgs, short maxArgs,
                          Answer answer) {
    return {id, prototype, minArgs, maxArgs, kFlags, F, answer, &rvl::Enter<Body, F>};
}

// Frames: five functions have none and let a host failure reach the host (Version,
// ExecuteSQL, DoFileMakerScript, RegExp_PatternCount, GetTimestamp); ValueType answers 0 to the
// host even after its frame caught a failure; every other function answers the frame's code.
//
// Counts are what the host enforces; some differ from what the prototypes suggest
// (GetTimestamp takes one argument, SetGlobal, GetGlobal and GetAsHTML none at the host level):
// the bodies check their own arguments, with their own messages.
// clang-format off
constexpr FunctionRow kTable[] = {
    row<body::Ravelin_Version, Frame::kNone>(1, "Ravelin_Version( { versionFormat } )", 0, -1, Answer::kText),
    row<body::Ravelin_Get, Frame::kFramed>(2, "Ravelin_Get( selector { ; moreOptions } )", 0, -1, Answer::kBySelector),
    row<body::Ravelin_Set, Frame::kFramed>(3, "Ravelin_Set( selector ; newValue )", 2, -1, Answer::kBySelector),
    row<body::Ravelin_ExecuteSQL, Frame::kNone>(4, "Ravelin_ExecuteSQL( SQLCommand { ; fieldSeparator { ; recordSeparator } } )", 1, -1, Answer::kText),
    row<body::Ravelin_Encode, Frame::kFramed>(5, "Ravelin_Encode( encoding ; text )", 2, 2, Answer::kText),
    row<body::Ravelin_Decode, Frame::kFramed>(6, "Ravelin_Decode( encoding ; text )", 2, 2, Answer::kText),
    row<body::Ravelin_MergeText, Frame::kFramed>(7, "Ravelin_MergeText( text )", 1, -1, Answer::kText),
    row<body::Ravelin_DoFileMakerScript, Frame::kNone>(8, "Ravelin_DoFileMakerScript( scriptName { ; scriptParameter } { ; delayOrTime } )", 1, -1, Answer::kNumber),
    row<body::Ravelin_DoSystemScript, Frame::kFramed>(9, "Ravelin_DoSystemScript( scriptText ; scriptInterpreter )", 2, -1, Answer::kNumber),
    row<body::Ravelin_GetDefaultPrinter, Frame::kFramed>(10, "Ravelin_GetDefaultPrinter", 0, -1, Answer::kNumber),
    row<body::Ravelin_SetDefaultPrinter, Frame::kFramed>(11, "Ravelin_SetDefaultPrinter( printerName )", 1, -1, Answer::kNumber),
    row<body::Ravelin_GetPrinterNames, Frame::kFramed>(12, "Ravelin_GetPrinterNames", 0, -1, Answer::kNumber),
    row<body::Ravelin_RegExp_Substitute, Frame::kFramed>(13, "Ravelin_RegExp_Substitute( text ; searchPattern ; replaceString1 { ; replaceString2 ... } )", 3, -1, Answer::kText),
    row<body::Ravelin_RegExp_PatternCount, Frame::kNone>(14, "Ravelin_RegExp_PatternCount( text ; searchPattern )", 2, -1, Answer::kText),
    row<body::Ravelin_GetClientPublicIPAddress, Frame::kFramed>(15, "Ravelin_GetClientPublicIPAddress", 0, -1, Answer::kText),
    row<body::Ravelin_GetNameForIP, Frame::kFramed>(17, "Ravelin_GetNameForIP( hostIP )", 1, -1, Answer::kText),
    row<body::Ravelin_GetIPforName, Frame::kFramed>(18, "Ravelin_GetIPforName( hostName )", 1, -1, Answer::kText),
    row<body::Ravelin_GetSpecialWindows, Frame::kFramed>(19, "Ravelin_GetSpecialWindows", 0, -1, Answer::kNumber),
    row<body::Ravelin_SetScriptShortcut, Frame::kFramed>(20, "Ravelin_SetScriptShortcut( key ; scriptName { ; scriptParameter } { ; scriptControl } )", 2, -1, Answer::kNumber),
    row<body::Ravelin_ValueType, Frame::kFramedAnswerZero>(21, "Ravelin_ValueType( value )", 1, 1, Answer::kText),
    row<body::Ravelin_GetTimestamp, Frame::kNone>(22, "Ravelin_GetTimestamp", 0, 1, Answer::kTimestamp),
    row<body::Ravelin_SetGlobal, Frame::kFramed>(23, "Ravelin_SetGlobal( key ; value { ; moreOptions } )", 0, -1, Answer::kValueOwnType),
    row<body::Ravelin_GetGlobal, Frame::kFramed>(24, "Ravelin_GetGlobal( key )", 0, -1, Answer::kValueOwnType),
    row<body::Ravelin_GetAsHTML, Frame::kFramed>(25, "Ravelin_GetAsHTML( key )", 0, -1, Answer::kText),
};
// clang-format on

constexpr fmx::ExtPluginType entryOf(short id) {
    for (const FunctionRow& r : kTable) {
        if (r.id == id) return r.function;
    }
    return nullptr;
}

}  // namespace

std::span<const FunctionRow> functionTable() { return kTable; }

constinit const fmx::ExtPluginType Ravelin_Version = entryOf(1), Ravelin_Get = entryOf(2),
                                   Ravelin_Set = entryOf(3), Ravelin_ExecuteSQL = entryOf(4),
                                   Ravelin_Encode = entryOf(5), Ravelin_Decode = entryOf(6),
                                   Ravelin_MergeText = entryOf(7),
                                   Ravelin_DoFileMakerScript = entryOf(8),
                                   Ravelin_DoSystemScript = entryOf(9),
                                   Ravelin_GetDefaultPrinter = entryOf(10),
                                   Ravelin_SetDefaultPrinter = entryOf(11),
                                   Ravelin_GetPrinterNames = entryOf(12),
                                   Ravelin_RegExp_Substitute = entryOf(13),
                                   Ravelin_RegExp_PatternCount = entryOf(14),
                                   Ravelin_GetClientPublicIPAddress = entryOf(15),
                                   Ravelin_GetNameForIP = entryOf(17),
                                   Ravelin_GetIPforName = entryOf(18),
                                   Ravelin_GetSpecialWindows = entryOf(19),
                                   Ravelin_SetScriptShortcut = entryOf(20),
                                   Ravelin_ValueType = entryOf(21),
                                   Ravelin_GetTimestamp = entryOf(22),
                                   Ravelin_SetGlobal = entryOf(23), Ravelin_GetGlobal = entryOf(24),
                                   Ravelin_GetAsHTML = entryOf(25);
