#include "RVGit/base/RVObservable.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

class RVObservable::Observation {
public:
    Observation(std::string_view field, Handler handler)
        : field_(field), handler_(std::move(handler)) {}

    const std::string& field() const { return field_; }
    void notify() const { handler_(field_); }

private:
    std::string field_;
    Handler handler_;
};

struct RVObservable::Observers {
    std::vector<std::weak_ptr<Observation>> observations;
};

RVObservable::RVObservable() noexcept = default;
RVObservable::~RVObservable() = default;
RVObservable::RVObservable(const RVObservable&) noexcept {}
RVObservable& RVObservable::operator=(const RVObservable&) noexcept {
    return *this;
}

std::shared_ptr<RVObservable::Observation> RVObservable::observe(std::string_view field,
                                                                 Handler handler) {
    if (!observers_)
        observers_ = std::make_unique<Observers>();
    auto observation = std::make_shared<Observation>(field, std::move(handler));
    auto& observations = observers_->observations;
    std::erase_if(observations, [](const auto& entry) { return entry.expired(); });
    observations.push_back(observation);
    return observation;
}

void RVObservable::fieldsDidChange(std::initializer_list<std::string_view> fields) {
    if (!observers_)
        return;
    // A copy, since a handler may add observations, or even destroy this object.
    const auto observations = observers_->observations;
    for (const auto& entry : observations) {
        const auto observation = entry.lock();
        if (observation &&
            std::find(fields.begin(), fields.end(), observation->field()) != fields.end())
            observation->notify();
    }
}
