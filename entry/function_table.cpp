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

constexpr fmx::uint32 kFlags = 0xFF01;  // every device, shown in every calculation dialog

// Some counts differ from what the prototypes suggest (GetTimestamp takes one argument, SetGlobal
// and GetGlobal none at the host level): the functions check their own arguments.
// clang-format off
constexpr FunctionRow kTable[] = {
    {1, "Ravelin_Version( { versionFormat } )", 0, -1, kFlags, Ravelin_Version},
    {2, "Ravelin_Get( selector { ; moreOptions } )", 0, -1, kFlags, Ravelin_Get},
    {3, "Ravelin_Set( selector ; newValue )", 2, -1, kFlags, Ravelin_Set},
    {4, "Ravelin_ExecuteSQL( SQLCommand { ; fieldSeparator { ; recordSeparator } } )", 1, -1, kFlags, Ravelin_ExecuteSQL},
    {5, "Ravelin_Encode( encoding ; text )", 2, 2, kFlags, Ravelin_Encode},
    {6, "Ravelin_Decode( encoding ; text )", 2, 2, kFlags, Ravelin_Decode},
    {7, "Ravelin_MergeText( text )", 1, -1, kFlags, Ravelin_MergeText},
    {8, "Ravelin_DoFileMakerScript( scriptName { ; scriptParameter } { ; delayOrTime } )", 1, -1, kFlags, Ravelin_DoFileMakerScript},
    {9, "Ravelin_DoSystemScript( scriptText ; scriptInterpreter )", 2, -1, kFlags, Ravelin_DoSystemScript},
    {10, "Ravelin_GetDefaultPrinter", 0, -1, kFlags, Ravelin_GetDefaultPrinter},
    {11, "Ravelin_SetDefaultPrinter( printerName )", 1, -1, kFlags, Ravelin_SetDefaultPrinter},
    {12, "Ravelin_GetPrinterNames", 0, -1, kFlags, Ravelin_GetPrinterNames},
    {13, "Ravelin_RegExp_Substitute( text ; searchPattern ; replaceString1 { ; replaceString2 ... } )", 3, -1, kFlags, Ravelin_RegExp_Substitute},
    {14, "Ravelin_RegExp_PatternCount( text ; searchPattern )", 2, -1, kFlags, Ravelin_RegExp_PatternCount},
    {15, "Ravelin_GetClientPublicIPAddress", 0, -1, kFlags, Ravelin_GetClientPublicIPAddress},
    {17, "Ravelin_GetNameForIP( hostIP )", 1, -1, kFlags, Ravelin_GetNameForIP},
    {18, "Ravelin_GetIPforName( hostName )", 1, -1, kFlags, Ravelin_GetIPforName},
    {19, "Ravelin_GetSpecialWindows", 0, -1, kFlags, Ravelin_GetSpecialWindows},
    {20, "Ravelin_SetScriptShortcut( key ; scriptName { ; scriptParameter } { ; scriptControl } )", 2, -1, kFlags, Ravelin_SetScriptShortcut},
    {21, "Ravelin_ValueType( value )", 1, 1, kFlags, Ravelin_ValueType},
    {22, "Ravelin_GetTimestamp", 0, 1, kFlags, Ravelin_GetTimestamp},
    {23, "Ravelin_SetGlobal( key ; value { ; moreOptions } )", 0, -1, kFlags, Ravelin_SetGlobal},
    {24, "Ravelin_GetGlobal( key )", 0, -1, kFlags, Ravelin_GetGlobal},
    {25, "Ravelin_GetAsHTML( key )", 0, -1, kFlags, Ravelin_GetAsHTML},
};
// clang-format on

}  // namespace

std::span<const FunctionRow> functionTable() { return kTable; }
