// The FM_ExprEnv_* functions: evaluation, Get functions, SQL and function registration as the
// plug-in reaches them through fmx::ExprEnv.
#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "host/fmx_abi.h"
#include "sim/abi/guard.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/core/objects.h"
#include "sim/core/paths.h"
#include "sim/session/database.h"
#include "sim/session/host.h"
#include "sim/session/host_context.h"

namespace {

using sim::Env;
using sim::Host;
using sim::Value;
using sim::abi::guardOr;
using sim::abi::guardRelease;

// The file a SQL call runs on: the named one, or the calling file for an empty name.
std::u16string sqlFile(const Env& env, const fmx::Text& filename) {
    const std::u16string_view named = sim::textOf(filename).units();
    if (!named.empty()) return std::u16string(named);
    return sim::HostContext(Host::instance(), env).fileName();
}

// Keeps a result's rows in a row vector, each field an owned value of its own. The texts of the
// fields (a text's units, the text form of any other value) of consecutive rows lie together in
// blocks of a few kilobytes that the values share, so that a row takes one allocation of its own
// (its fields), not one more for each field's text.
class RowsInto final : public sim::Database::RowSink {
public:
    explicit RowsInto(fmx::RowVect& rows) : rows_(sim::objectOf(rows).rows) {}
    void row(const sim::Database::Row& row) override {
        const auto columns = static_cast<std::size_t>(row.columns());
        auto& items = rows_.emplace_back().items;
        items.reserve(columns);
        for (std::size_t c = 0; c < columns; ++c) {
            items.emplace_back([&] { return row.value(static_cast<int>(c), texts_); });
            ends_.push_back(texts_.size());
        }
        if (texts_.size() >= kBlockUnits) shareTexts();
    }

    // Gives the fields of the rows read since the last call their texts, from one block. The
    // values have no text before: call it once the last row is read.
    void shareTexts() {
        if (!texts_.empty()) {
            const sim::UnitsBlock block(texts_, ends_);
            std::size_t field = 0;
            std::size_t start = 0;
            for (std::size_t r = firstWaiting_; r < rows_.size(); ++r) {
                for (const sim::DataObj& item : rows_[r].items) {
                    // An empty text needs no block: the value's own is empty too.
                    if (ends_[field] != start) item.setTextForm(block.at(field));
                    start = ends_[field++];
                }
            }
        }
        texts_.clear();
        ends_.clear();
        firstWaiting_ = rows_.size();
    }

private:
    static constexpr std::size_t kBlockUnits = 4096;
    std::vector<sim::DataVectObj>& rows_;
    std::size_t firstWaiting_ = 0;   // the first row whose fields wait for their texts
    std::u16string texts_;           // the waiting fields' texts, one after the other
    std::vector<std::size_t> ends_;  // where each waiting field's text ends in texts_
};

Value getFunctionValue(const Env& env, short which, fmx::errcode& error) {
    Host& host = Host::instance();
    switch (which) {
        case fmx::kGet_FileName:
            return Value::text(sim::HostContext(host, env).fileName());
        case fmx::kGet_ScriptParameter:
            return env.scriptParameter.type() == sim::Type::Invalid ? Value::text(std::u16string())
                                                                    : env.scriptParameter;
        case 1026:  // ScriptName
            return Value::text(env.scriptName);
        case 1041:  // LastExternalErrorDetail
            return Value::text(host.externalErrorDetail(sim::HostContext(host, env).fileName()));
        case fmx::kGet_ApplicationVersion:
        case 1090:  // HostApplicationVersion
            return Value::text(host.applicationVersion());
        case fmx::kGet_CurrentDate:
            return Value::date(sim::DateTime::fromDays(host.now().days()));
        case fmx::kGet_CurrentTime:
            return Value::time(sim::DateTime::fromSeconds(host.now().secondsOfDay()));
        case fmx::kGet_CurrentTimeStamp:
            return Value::timestamp(host.now());
        default:
            error = sim::kInvalidGetFunction;
            return {};
    }
}

}  // namespace

extern "C" {

fmx::ExprEnv* FM_ExprEnv_Constructor1(fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, static_cast<fmx::ExprEnv*>(nullptr),
                   [] { return (new Env)->handle(); });
}

void FM_ExprEnv_Delete(void* self, fmx::_fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete sim::envOf(self); });
}

fmx::errcode FM_ExprEnv_Evaluate(const void* self, const fmx::Text& expression, fmx::Data& result,
                                 fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::errcode{0}, [&]() -> fmx::errcode {
        const Env* env = sim::envOf(self);
        if (env == nullptr) return sim::kGenericCalcError;
        sim::calc::Result r = Host::instance().evaluate(sim::textOf(expression).units(), *env);
        sim::setValue(result, std::move(r.value));
        return r.error;
    });
}

fmx::errcode FM_ExprEnv_EvaluateGetFunction(const void* self, short functionValue,
                                            fmx::Data& result, fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::errcode{0}, [&]() -> fmx::errcode {
        const Env* env = sim::envOf(self);
        if (env == nullptr) return sim::kGenericCalcError;
        fmx::errcode error = 0;
        Value v = getFunctionValue(*env, functionValue, error);
        if (error == 0) sim::setValue(result, std::move(v));
        return error;
    });
}

// A path this host cannot convert, or an unknown format, answers 1200 and leaves the output.
FMX_API fmx::errcode FM_ExprEnv_EvaluateConvertToFileMakerPath(const void* self,
                                                               const fmx::Text& inPath,
                                                               fmx::int32 inFormat,
                                                               fmx::Text& outFMPath,
                                                               fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::errcode{0}, [&]() -> fmx::errcode {
        if (sim::envOf(self) == nullptr) return sim::kGenericCalcError;
        auto converted = sim::toFileMakerPath(sim::textOf(inPath).units(), inFormat);
        if (!converted) return sim::kGenericCalcError;
        sim::abi::arg(outFMPath).assign(*converted);
        return 0;
    });
}

FMX_API fmx::errcode FM_ExprEnv_EvaluateConvertFromFileMakerPath(const void* self,
                                                                 const fmx::Text& inFMPath,
                                                                 fmx::int32 inFormat,
                                                                 fmx::Text& outPath,
                                                                 fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::errcode{0}, [&]() -> fmx::errcode {
        if (sim::envOf(self) == nullptr) return sim::kGenericCalcError;
        auto converted = sim::fromFileMakerPath(sim::textOf(inFMPath).units(), inFormat);
        if (!converted) return sim::kGenericCalcError;
        sim::abi::arg(outPath).assign(*converted);
        return 0;
    });
}

fmx::errcode FM_ExprEnv_ExecuteFileSQL(const void* self, const fmx::Text& expression,
                                       const fmx::Text& filename, const fmx::DataVect& parameters,
                                       fmx::RowVect& result, fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::errcode{0}, [&]() -> fmx::errcode {
        const Env* env = sim::envOf(self);
        if (env == nullptr) return sim::kGenericCalcError;
        auto db = Host::instance().database(sqlFile(*env, filename));
        if (!db) return sim::kFileMissing;
        sim::clearRows(result);
        RowsInto sink(result);
        std::string message;
        short error = 0;
        try {
            error = db->query(sim::textOf(expression).units(), sim::valuesOf(parameters), sink,
                              sim::Database::Access::Any, &message);
            if (error == 0) sink.shareTexts();
        } catch (...) {
            sim::clearRows(result);  // no rows whose fields still wait for their texts
            throw;
        }
        if (error) {
            sim::clearRows(result);
            if (env->notes) env->notes->sqlFailed(std::move(message));
        }
        return error;
    });
}

fmx::errcode FM_ExprEnv_ExecuteFileSQLTextResult(const void* self, const fmx::Text& expression,
                                                 const fmx::Text& filename,
                                                 const fmx::DataVect& parameters, fmx::Data& result,
                                                 fmx::uint16 colSep, fmx::uint16 rowSep,
                                                 fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::errcode{0}, [&]() -> fmx::errcode {
        const Env* env = sim::envOf(self);
        if (env == nullptr) return sim::kGenericCalcError;
        auto db = Host::instance().database(sqlFile(*env, filename));
        if (!db) return sim::kFileMissing;
        const char16_t fieldSeparator = static_cast<char16_t>(colSep);
        const char16_t rowSeparator = static_cast<char16_t>(rowSep);
        std::u16string joined;
        std::string message;
        const short error = db->queryText(
            sim::textOf(expression).units(), sim::valuesOf(parameters), {&fieldSeparator, 1},
            {&rowSeparator, 1}, joined, sim::Database::Access::Any, &message);
        if (error) {
            if (env->notes) env->notes->sqlFailed(std::move(message));
            return error;
        }
        sim::setValue(result, Value::text(std::move(joined)));
        return 0;
    });
}

fmx::ptrtype FM_ExprEnv_SessionID(const void* self, fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::ptrtype{0},
                   [&] { return sim::envOf(self) ? Host::kSessionId : fmx::ptrtype{0}; });
}

fmx::ptrtype FM_ExprEnv_FileID(const void* self, fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::ptrtype{0}, [&]() -> fmx::ptrtype {
        const Env* env = sim::envOf(self);
        if (env == nullptr) return 0;
        Host& host = Host::instance();
        return host.fileId(sim::HostContext(host, *env).fileName());
    });
}

fmx::errcode FM_ExprEnv_RegisterExternalFunctionEx(
    const fmx::QuadChar& /*pluginId*/, short functionId, const fmx::Text& functionName,
    const fmx::Text& functionPrototype, const fmx::Text& functionDescription, short minArgs,
    short maxArgs, fmx::uint32 compatibleOnFlags, fmx::ExtPluginType funcPtr,
    fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::errcode{0}, [&] {
        return Host::instance().registerFunction({functionId, sim::textOf(functionName).unitsCopy(),
                                                  sim::textOf(functionPrototype).unitsCopy(),
                                                  sim::textOf(functionDescription).unitsCopy(),
                                                  minArgs, maxArgs, compatibleOnFlags, funcPtr});
    });
}

fmx::errcode FM_ExprEnv_RegisterExternalFunction(const fmx::QuadChar& /*pluginId*/,
                                                 short functionId, const fmx::Text& functionName,
                                                 const fmx::Text& functionPrototype, short minArgs,
                                                 short maxArgs, fmx::uint32 compatibleOnFlags,
                                                 fmx::ExtPluginType funcPtr,
                                                 fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::errcode{0}, [&] {
        return Host::instance().registerFunction({functionId, sim::textOf(functionName).unitsCopy(),
                                                  sim::textOf(functionPrototype).unitsCopy(),
                                                  std::u16string(), minArgs, maxArgs,
                                                  compatibleOnFlags, funcPtr});
    });
}

// Scripts here are calculations, so no script runs a plug-in's step; the host accepts a
// well-formed step (a name and a function) and forgets it.
FMX_API fmx::errcode FM_ExprEnv_RegisterScriptStep(
    const fmx::QuadChar& /*pluginId*/, short /*scriptStepId*/, const fmx::Text& scriptStepName,
    const fmx::Text& /*scriptStepDefinition*/, const fmx::Text& /*scriptStepDescription*/,
    fmx::uint32 /*compatibleOnFlags*/, fmx::ExtPluginType funcPtr, fmx::_fmxcpt& x) {
    return guardOr(__func__, x, fmx::errcode{0}, [&]() -> fmx::errcode {
        if (funcPtr == nullptr || sim::textOf(scriptStepName).units().empty()) return -1;
        return 0;
    });
}

FMX_API fmx::errcode FM_ExprEnv_UnRegisterScriptStep(const fmx::QuadChar& /*pluginId*/,
                                                     short /*scriptStepId*/, fmx::_fmxcpt& x) {
    return guardOr(__func__, x, fmx::errcode{0}, [&] { return fmx::errcode{0}; });
}

fmx::errcode FM_ExprEnv_UnRegisterExternalFunction(const fmx::QuadChar& /*pluginId*/,
                                                   short functionId, fmx::_fmxcpt& x) noexcept {
    return guardOr(__func__, x, fmx::errcode{0},
                   [&] { return Host::instance().unregisterFunction(functionId); });
}

}  // extern "C"
