#pragma once

#include <exception>
#include <utility>

#include "RVGit/base/RVExport.h"

/// For steps that must all be taken, whatever the others throw: keeps the first exception until
/// they have been.
class RVGIT_EXPORT RVFirstException {
public:
    explicit RVFirstException(std::exception_ptr exception = nullptr)
        : exception_(std::move(exception)) {}

    template <typename Step>
    void keepFrom(const Step& step) {
        try {
            step();
        } catch (...) {
            if (!exception_)
                exception_ = std::current_exception();
        }
    }
    void rethrow() const {
        if (exception_)
            std::rethrow_exception(exception_);
    }

private:
    std::exception_ptr exception_;
};
