// A thread with a stack of a chosen size, for work whose stack depth grows with its input (the
// standard library's regular-expression matcher recurses once per character it walks). The
// calling thread's own stack, small on a server, is never at stake.
#pragma once

#include <cstddef>
#include <functional>

namespace rvl {

// Runs `work` on a new thread with `stackBytes` of stack and waits for it. The stack is reserved
// lazily: only the pages the work touches take memory, and all of it is given back when the
// thread ends. Below the stack lies a guard area, so that an overflow stops the process cleanly
// instead of writing into other memory. What `work` throws is thrown here; std::bad_alloc when
// the stack or the thread cannot be had. With `touched`, reports how many bytes of the stack
// the work used (for checking the size estimates).
void RunOnBigStack(std::size_t stackBytes, const std::function<void()>& work,
                   std::size_t* touched = nullptr);

}  // namespace rvl
