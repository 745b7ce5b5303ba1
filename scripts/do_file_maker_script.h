// Ravelin_DoFileMakerScript( scriptName { ; scriptParameter } { ; delayOrTime } ): starts a
// script of the calling file at once, or hands it to the scheduler to start after a delay or at
// a time up to a day ahead.
#pragma once

#include "host/fmx.h"
#include "scripts/ravelin.h"

// The function's body with the scheduler it hands delayed requests to. It has no exception
// frame: a host failure leaves it as an exception, for the host to see.
fmx::errcode doFileMakerScript(const fmx::ExprEnv& env, const fmx::DataVect& args,
                               fmx::Data& result, Ravelin& scheduler);

// Starts a script of the calling file at once: 0, or -50 when the file has no script of that
// name. What the host's start-script answers is not looked at.
fmx::int16 runFMScript(const fmx::Text& scriptName, const fmx::Data& parameter,
                       const fmx::ExprEnv& env);

// True when `scriptName` equals, ignoring case, a whole line of the file's "ScriptNames". The
// file name goes into that calculation unescaped, so one holding a quotation mark breaks it
// and no name is valid.
bool IsScriptNameValidInFile(const fmx::Text& scriptName, const fmx::Text& fileName,
                             const fmx::ExprEnv& env);
