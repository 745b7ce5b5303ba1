// Runs a function when the scope ends, however it ends.
#pragma once

#include <utility>

namespace fmlib {

template <class F>
class OnExit {
public:
    explicit OnExit(F f) : f_(std::move(f)) {}
    ~OnExit() { f_(); }
    OnExit(const OnExit&) = delete;
    OnExit& operator=(const OnExit&) = delete;

private:
    F f_;
};

}  // namespace fmlib
