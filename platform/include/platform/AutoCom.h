// Intrusive reference counting: the base of every shared platform object and the pointer that holds one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace kv {

// An object that counts its holders and deletes itself when the last one lets go. New objects start with a
// count of 1 that belongs to whoever created them. Not safe for use from several threads.
class IRefCounted {
public:
    virtual void AddRef() = 0;
    // Returns the new count; at 0 the object is gone.
    virtual std::int32_t Release() = 0;

protected:
    virtual ~IRefCounted() = default;
};

// Implements the counting for a class derived from an interface that is an IRefCounted.
template <class Interface>
class RefCounted : public Interface {
public:
    void AddRef() override { ++m_count; }
    std::int32_t Release() override {
        const std::int32_t left = --m_count;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    RefCounted() = default;
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;

private:
    std::int32_t m_count = 1;
};

// Holds one reference of a counted object, or none. How a plain pointer is taken in is always spelt out:
// adopt() takes over a reference that the caller owns, retain() adds one.
template <class T>
class auto_com {
public:
    auto_com() = default;
    auto_com(std::nullptr_t) {}
    auto_com(const auto_com& other) : m_object(other.m_object) {
        if (m_object)
            m_object->AddRef();
    }
    auto_com(auto_com&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    // From a holder of a derived class.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    auto_com(auto_com<U> other) : m_object(other.detach()) {}
    ~auto_com() { reset(); }

    auto_com& operator=(auto_com other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }

    static auto_com adopt(T* object) {
        auto_com holder;
        holder.m_object = object;
        return holder;
    }
    static auto_com retain(T* object) {
        if (object)
            object->AddRef();
        return adopt(object);
    }

    void reset() {
        if (T* old = std::exchange(m_object, nullptr))
            old->Release();
    }
    // Gives the reference away: the caller releases it.
    [[nodiscard]] T* detach() { return std::exchange(m_object, nullptr); }

    T* get() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }
    // The same object.
    bool operator==(const auto_com& other) const { return m_object == other.m_object; }

private:
    T* m_object = nullptr;
};

} // namespace kv
