#include "frame/registry.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "frame/functions.h"

namespace {

constexpr fmx::uint32 kFlags = 0xFF01;  // every device, shown in every calculation dialog
constexpr unsigned kStringIdOffset = 100;
constexpr std::size_t kWorkUnits = 1024;

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

constexpr short kHighestId = 25;

const char* prototypeFor(unsigned stringId) {
    for (const FunctionRow& row : kTable) {
        if (static_cast<unsigned>(row.id) + kStringIdOffset == stringId) return row.prototype;
    }
    return "ERROR";
}

}  // namespace

std::span<const FunctionRow> functionTable() { return kTable; }

fmx::QuadCharUniquePtr pluginId() { return fmx::QuadCharUniquePtr('R', 'V', 'L', 'X'); }

void Do_GetString(unsigned stringId, fmx::Text& text, bool nameOnly) {
    const char* chosen = prototypeFor(stringId);
    // Zero-filled, so whatever is copied in stays terminated.
    std::array<fmx::unichar16, kWorkUnits> work{};
    const std::size_t length = std::min(std::strlen(chosen), kWorkUnits - 1);
    std::copy_n(reinterpret_cast<const unsigned char*>(chosen), length, work.begin());
    if (nameOnly) {
        // Without a "(" this lands on the terminator already there: the prototype is the name.
        *std::find(work.begin(), work.begin() + length, fmx::unichar16{'('}) = 0;
    }
    text.AssignUnicode(work.data());
}

fmx::errcode RegisterExternalFunction(short id, short minArgs, short maxArgs, fmx::uint32 flags,
                                      fmx::ExtPluginType function) {
    fmx::TextUniquePtr name;
    fmx::TextUniquePtr prototype;
    Do_GetString(id + kStringIdOffset, *name, true);
    Do_GetString(id + kStringIdOffset, *prototype, false);
    return fmx::ExprEnv::RegisterExternalFunction(*pluginId(), id, *name, *prototype, minArgs,
                                                  maxArgs, flags, function);
}

fmx::errcode UnRegisterExternalFunction(short id) {
    return fmx::ExprEnv::UnRegisterExternalFunction(*pluginId(), id);
}

bool RegisterExternalFunctions() {
    for (std::size_t i = 0; i < std::size(kTable); ++i) {
        const FunctionRow& row = kTable[i];
        const fmx::errcode err =
            RegisterExternalFunction(row.id, row.minArgs, row.maxArgs, row.flags, row.function);
        if (err != 0) {
            while (i-- > 0) UnRegisterExternalFunction(kTable[i].id);
            return false;
        }
    }
    return true;
}

void UnRegisterExternalFunctions() {
    for (short id = kHighestId; id >= 1; --id) UnRegisterExternalFunction(id);
}
