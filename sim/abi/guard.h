// The frame around every FM_* function: fault injection first, then the body, with every
// exception turned into the failure record's code (1 for std::bad_alloc, 2 for anything else)
// and a neutral return value. Also the checked access to the objects behind handle arguments.
#pragma once

#include <exception>
#include <new>
#include <type_traits>
#include <utility>

#include "host/fmx_abi.h"
#include "sim/abi/faults.h"
#include "sim/core/objects.h"

namespace sim::abi {

// A null handle, a null buffer with a size, an index out of range: reported as code 2.
struct BadArgument : std::exception {
    const char* what() const noexcept override { return "invalid argument to a host call"; }
};

inline void require(bool ok) {
    if (!ok) throw BadArgument();
}

// The address of a referenced handle, hidden from the optimiser: a reference that crossed the C
// boundary may still be null, and that check must not be folded away.
template <class T>
const void* addressOf(const T& ref) noexcept {
    const void* p = &ref;
    asm volatile("" : "+r"(p));
    return p;
}

// `_self` of a member function.
template <class Obj>
Obj& self(void* p) {
    require(p != nullptr);
    return *static_cast<Obj*>(p);
}

template <class Obj>
const Obj& self(const void* p) {
    require(p != nullptr);
    return *static_cast<const Obj*>(p);
}

// The object behind a handle passed by reference.
template <class Handle>
typename ObjectOf<Handle>::type& arg(Handle& h) {
    require(addressOf(h) != nullptr);
    return objectOf(h);
}

inline fmx::_fmxcpt& recordOr(fmx::_fmxcpt& record, fmx::_fmxcpt& spare) noexcept {
    return addressOf(record) != nullptr ? record : spare;
}

// Runs a body that returns nothing; what it throws becomes the record's code.
template <class Body>
void runRecording(fmx::_fmxcpt& x, Body&& body) noexcept {
    try {
        body();
    } catch (const std::bad_alloc&) {
        x.m_code = fmx::_fmxcpt::kBadAlloc;
    } catch (...) {
        x.m_code = fmx::_fmxcpt::kUnknown;
    }
}

template <class R, class Body>
R guardOr(const char* function, fmx::_fmxcpt& record, R fallback, Body&& body) noexcept {
    fmx::_fmxcpt spare;
    fmx::_fmxcpt& x = recordOr(record, spare);
    if (faults::shouldFail(function, x)) return fallback;
    try {
        return body();
    } catch (const std::bad_alloc&) {
        x.m_code = fmx::_fmxcpt::kBadAlloc;
    } catch (...) {
        x.m_code = fmx::_fmxcpt::kUnknown;
    }
    return fallback;
}

// The same with the value-initialised result (0, false, nullptr) as the neutral value.
template <class Body>
auto guard(const char* function, fmx::_fmxcpt& record, Body&& body) noexcept {
    using R = std::invoke_result_t<Body&>;
    if constexpr (std::is_void_v<R>) {
        fmx::_fmxcpt spare;
        fmx::_fmxcpt& x = recordOr(record, spare);
        if (faults::shouldFail(function, x)) return;
        runRecording(x, body);
    } else {
        return guardOr<R>(function, record, R{}, std::forward<Body>(body));
    }
}

// A Delete frees its object whatever happens: a fault injected into it is reported through the
// record after the object is gone, as a host that failed on the way out would, never simulated
// by keeping the object.
template <class Body>
void guardRelease(const char* function, fmx::_fmxcpt& record, Body&& body) noexcept {
    fmx::_fmxcpt spare;
    fmx::_fmxcpt& x = recordOr(record, spare);
    fmx::_fmxcpt injected;
    const bool fails = faults::shouldFail(function, injected);
    runRecording(x, body);
    if (fails) x.m_code = injected.m_code;
}

}  // namespace sim::abi
