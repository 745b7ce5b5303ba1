// Basic types, constants and the entry parameter block of the host's plug-in interface.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fmx {

using uchar = unsigned char;
using int16 = short;
using uint16 = unsigned short;
using int32 = int;
using uint32 = unsigned int;
using int64 = long;
using uint64 = unsigned long;
using ptrtype = uint64;
using unusedid = int32;
using errcode = short;
using unichar16 = unsigned short;

class Text;
class Data;
class DataVect;
class RowVect;
class ExprEnv;
class FixPt;
class DateTime;
class BinaryData;
class QuadChar;
class Locale;
class Color;
class CharacterStyle;

// The failure record passed as the last argument of every host call. The host sets m_code;
// Check() turns it into an exception on the plug-in's side of the boundary.
struct _fmxcpt {
    enum { kNoErr = 0, kBadAlloc = 1, kUnknown = 2 };
    _fmxcpt() : m_vers(1), m_code(kNoErr) {}
    void Check() const;  // defined in fmx.h
    int32 m_vers;
    int32 m_code;
};
static_assert(sizeof(_fmxcpt) == 8);

// Calculation functions and script steps share this signature.
using ExtPluginType = errcode (*)(short functionId, const ExprEnv& env, const DataVect& parms,
                                  Data& result);

// Text encodings (positional in the host's list).
enum Encoding : int32 {
    kEncoding_Native = 0,
    kEncoding_UTF8 = 1,
    kEncoding_ASCII_DOS = 2,
    kEncoding_ASCII_Windows = 3,
    kEncoding_ASCII_Mac = 4,
    kEncoding_ISO_8859_1 = 5,
};

constexpr uint32 kSize_Invalid = 0xFFFFFFFFu;
constexpr uint32 kSize_End = 0xFFFFFFFFu;

// Native value types.
enum DataType : int32 {
    kDTInvalid = 0,
    kDTText = 1,
    kDTNumber = 2,
    kDTDate = 3,
    kDTTime = 4,
    kDTTimeStamp = 5,
    kDTBinary = 6,
    kDTBoolean = 7,
};

// Character face bits.
enum Face : uint16 {
    kFace_Plain = 0,
    kFace_Strikethrough = 0x0001,
    kFace_SmallCaps = 0x0002,
    kFace_Superscript = 0x0004,
    kFace_Subscript = 0x0008,
    kFace_Uppercase = 0x0010,
    kFace_Lowercase = 0x0020,
    kFace_Titlecase = 0x0030,
    kFace_WordUnderline = 0x0040,
    kFace_DoubleUnderline = 0x0080,
    kFace_Bold = 0x0100,
    kFace_Italic = 0x0200,
    kFace_Underline = 0x0400,
    kFace_Outline = 0x0800,
    kFace_Shadow = 0x1000,
    kFace_Condense = 0x2000,
    kFace_Extend = 0x4000,
    kFace_AllStyles = 0x7FFF,
};

// Locale kinds used by the plug-in and the substitute host.
enum LocaleType : int32 {
    kLocale_None = 0,
    kLocale_System = 1,
    kLocale_UnicodeRaw = 2,
    kLocale_UnicodeStandard = 3,
    kLocale_Catalog = 4,
    kLocale_ENG = 21,
    kLocale_Invalid = 0xFFFF,
};

// Compatibility and display flags for function registration.
enum : uint32 {
    kMayEvaluateOnServer = 0x00000001,
    kDisplayInAllDialogs = 0x0000FF00,
    kMacCompatible = 0x00000002,
    kWinCompatible = 0x00000004,
    kServerCompatible = 0x00000008,
    kIOSCompatible = 0x00000010,
    kCustomWebCompatible = 0x00000020,
    kWebDirectCompatible = 0x00000040,
    kAllDeviceCompatible = 0x0000007E,
    kFutureCompatible = 0x00FF007E,
};

constexpr int kDefltFixedPrecision = 16;

// Get() function selectors for ExprEnv::EvaluateGetFunction (subset).
enum GetFunction : short {
    kGet_ApplicationVersion = 1001,
    kGet_CurrentDate = 1002,
    kGet_FileName = 1005,
    kGet_CurrentTime = 1029,
    kGet_ScriptParameter = 1062,
    kGet_CurrentTimeStamp = 1063,
};

}  // namespace fmx

extern "C" {

using FMX_UChar = fmx::uchar;
using FMX_Int16 = fmx::int16;
using FMX_UInt16 = fmx::uint16;
using FMX_Int32 = fmx::int32;
using FMX_UInt32 = fmx::uint32;
using FMX_Unichar = fmx::unichar16;
using FMX_ErrorCode = fmx::errcode;
using FMX_PtrType = fmx::ptrtype;
using FMX_Boolean = char;
using FMX_ScriptControl = FMX_UChar;
using FMX_ExternCallSwitch = FMX_UChar;
using FMX_Strings = FMX_UChar;
using FMX_IdleLevel = FMX_UChar;
using FMX_Application = FMX_UChar;

struct FMX_ExternCallStruct;
using FMX_ExternCallPtr = FMX_ExternCallStruct*;
using FMX_ExternCallProc = void (*)(FMX_ExternCallPtr);

using FMX_StartScriptCall = FMX_ErrorCode (*)(const fmx::Text* fileName,
                                              const fmx::Text* scriptName,
                                              FMX_ScriptControl control,
                                              const fmx::Data* parameter);
using FMX_CurrentEnvCall = FMX_ErrorCode (*)(fmx::ExprEnv* env);

// The parameter block of every entry call; packed to one-byte alignment.
struct __attribute__((packed)) FMX_ExternCallStruct {
    FMX_Int16 extnVersion;
    fmx::unusedid unusedID;
    FMX_ExternCallProc entryPoint;
    FMX_Boolean unusedFlag;
    FMX_ExternCallSwitch whichCall;
    FMX_Boolean unsafeCalls;
    FMX_UChar parm1;
    FMX_PtrType parm2;
    FMX_PtrType parm3;
    FMX_PtrType instanceID;
    FMX_PtrType result;
    FMX_PtrType unused;
    FMX_StartScriptCall cStartScript;
    FMX_CurrentEnvCall cCurrentEnv;
};

}  // extern "C"

static_assert(sizeof(FMX_ExternCallStruct) == 74, "packed LP64 layout");
static_assert(offsetof(FMX_ExternCallStruct, entryPoint) == 6);
static_assert(offsetof(FMX_ExternCallStruct, whichCall) == 15);
static_assert(offsetof(FMX_ExternCallStruct, parm1) == 17);
static_assert(offsetof(FMX_ExternCallStruct, parm2) == 18);
static_assert(offsetof(FMX_ExternCallStruct, parm3) == 26);
static_assert(offsetof(FMX_ExternCallStruct, result) == 42);
static_assert(offsetof(FMX_ExternCallStruct, cStartScript) == 58);
static_assert(offsetof(FMX_ExternCallStruct, cCurrentEnv) == 66);

// Call kinds.
enum : FMX_ExternCallSwitch {
    kFMXT_Init = 0,
    kFMXT_Idle = 1,
    kFMXT_Shutdown = 4,
    kFMXT_DoAppPreferences = 5,
    kFMXT_GetString = 7,
    kFMXT_SessionShutdown = 8,
    kFMXT_FileShutdown = 9,
    kFMXT_SchemaChange = 10,
};

// Interface versions and initialise results.
enum : short {
    kBadExtnVersion = -1,
    kDoNotEnable = -2,
    k70ExtnVersion = 50,
    k160ExtnVersion = 57,
    kMaxExtnVersion = 255,
};

// Idle kinds.
enum : FMX_IdleLevel {
    kFMXT_UserIdle = 0,
    kFMXT_UserNotIdle = 1,
    kFMXT_ScriptPaused = 2,
    kFMXT_ScriptRunning = 3,
    kFMXT_Unsafe = 4,
};

// String request ids.
enum : FMX_Strings {
    kFMXT_NameStr = 128,
    kFMXT_AppConfigStr = 129,
    kFMXT_OptionsStr = 131,
    kFMXT_HelpURLStr = 132,
};

// Script control.
enum : FMX_ScriptControl {
    kFMXT_Halt = 0,
    kFMXT_Exit = 1,
    kFMXT_Resume = 2,
    kFMXT_Pause = 3,
};

// Host process kinds.
enum : FMX_Application {
    kFMXT_Developer = 0,
    kFMXT_Pro = 1,
    kFMXT_Server = 3,
    kFMXT_Web = 4,
    kFMXT_SASE = 7,
};
