#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <string_view>

#include "RVGit/base/RVExport.h"

/// An object that tells handlers when a field has changed. It costs one pointer until the first
/// handler is added. Handlers run on the thread that changes the field, after the change; the
/// object takes no lock. Copies and moves do not take the handlers along.
class RVGIT_EXPORT RVObservable {
public:
    using Handler = std::function<void(std::string_view field)>;
    /// Keeps its handler registered while it lives. It may outlive the object. While handlers run,
    /// observations may come and go: a new one is first told of the next change, and one that is
    /// gone is told no more.
    class Observation;

    /// The handler is called with `field` each time it, or a field that it depends on, is set.
    [[nodiscard]] std::shared_ptr<Observation> observe(std::string_view field, Handler handler);

protected:
    RVObservable() noexcept;
    ~RVObservable();
    RVObservable(const RVObservable&) noexcept;
    RVObservable& operator=(const RVObservable&) noexcept;

    /// To be called by a setter after the change, with its field and those computed from it.
    void fieldsDidChange(std::initializer_list<std::string_view> fields);

private:
    struct Observers;
    std::unique_ptr<Observers> observers_;
};
