#include "sim/calc/context.h"

namespace sim::calc {

void Context::openCall() {
    if (openCalls_.size() == openDepth_)
        openCalls_.push_back(std::make_unique<std::vector<Value>>());
    ++openDepth_;
}

void Context::addArgument(Value&& v) { openCalls_[openDepth_ - 1]->push_back(std::move(v)); }

size_t Context::openArgumentCount() { return openCalls_[openDepth_ - 1]->size(); }

short Context::callOpened(const ExternalFunction& f, Value& result) {
    return callFunction(f, *openCalls_[openDepth_ - 1], result);
}

void Context::closeCall() noexcept { openCalls_[--openDepth_]->clear(); }

}  // namespace sim::calc
