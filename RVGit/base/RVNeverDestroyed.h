#pragma once

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <new>
#include <utility>

/// Holds a value that is never destroyed: for what lives as long as the process, such as tables,
/// expressions and singletons. Commands may still run on other threads while main() returns, so
/// nothing that they read may die with it.
///
///     static const RVNeverDestroyed<std::vector<std::string>> names = {"one", "two"};
///     static const RVNeverDestroyed<RVRegularExpression> expression("^[0-9]+$");
///     return *names;
///
/// Making it is as safe among threads as that of any function-local static. Only for statics:
/// anywhere else it leaks.
template <typename T>
class RVNeverDestroyed {
    template <typename U>
    struct ElementOf {
        struct type {};
    };
    template <typename U>
    requires requires { typename U::value_type; }
    struct ElementOf<U> {
        using type = typename U::value_type;
    };

public:
    RVNeverDestroyed() requires std::default_initializable<T> { new (storage_) T(); }
    /// For containers.
    RVNeverDestroyed(std::initializer_list<typename ElementOf<T>::type> elements) requires
        std::constructible_from<T, decltype(elements)> {
        new (storage_) T(elements);
    }
    /// Of one argument, which may be the value itself.
    template <typename Argument>
    requires std::constructible_from<T, Argument>
    explicit RVNeverDestroyed(Argument&& argument) {  // NOLINT(*-forwarding-reference-overload)
        new (storage_) T(std::forward<Argument>(argument));
    }
    template <typename... Arguments>
    requires std::constructible_from<T, Arguments...>
    explicit RVNeverDestroyed(std::in_place_t, Arguments&&... arguments) {
        new (storage_) T(std::forward<Arguments>(arguments)...);
    }
    RVNeverDestroyed(const RVNeverDestroyed&) = delete;
    RVNeverDestroyed& operator=(const RVNeverDestroyed&) = delete;

    [[nodiscard]] T& operator*() { return *std::launder(reinterpret_cast<T*>(storage_)); }
    [[nodiscard]] const T& operator*() const {
        return *std::launder(reinterpret_cast<const T*>(storage_));
    }
    [[nodiscard]] T* operator->() { return &**this; }
    [[nodiscard]] const T* operator->() const { return &**this; }

private:
    alignas(T) std::byte storage_[sizeof(T)];
};
