#pragma once

#include <memory>
#include <utility>

namespace slatewise {

/// A value that takes the room of a pointer as long as it is nothing but its default. For what is
/// large and, among very many, mostly absent. Copied, compared and thrown away as the value itself.
template <typename T>
class Boxed {
public:
    Boxed() = default;
    Boxed(T value) : value_(value == none() ? nullptr : std::make_unique<T>(std::move(value))) {}
    Boxed(const Boxed& other) : value_(other.copy()) {}
    Boxed(Boxed&&) noexcept = default;
    Boxed& operator=(const Boxed& other) {
        if (this != &other)
            value_ = other.copy();
        return *this;
    }
    Boxed& operator=(Boxed&&) noexcept = default;
    ~Boxed() = default;

    const T& operator*() const { return value_ ? *value_ : none(); }
    const T* operator->() const { return &**this; }

    /// For changing a part of it.
    T& edit() {
        if (!value_)
            value_ = std::make_unique<T>();
        return *value_;
    }

    friend bool operator==(const Boxed& left, const Boxed& right) { return *left == *right; }

private:
    static const T& none() {
        static const T value;
        return value;
    }
    std::unique_ptr<T> copy() const { return value_ ? std::make_unique<T>(*value_) : nullptr; }

    std::unique_ptr<T> value_;
};

} // namespace slatewise
