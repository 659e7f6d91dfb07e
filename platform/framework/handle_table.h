// SPDX-License-Identifier: MIT
// The table behind a kind of handle.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

// Objects by handles. A handle is a number above 0x100 (small numbers are left to be recognised as mistakes)
// that is never used again, so a stale one names nothing. Any thread; no function of T is called under the
// lock but what With is passed.
template <class T, class Handle>
class HandleTable {
public:
    // A handle for an object that needs to know it first.
    Handle Reserve() {
        const std::scoped_lock lock(m_mutex);
        ++m_last;
        if constexpr (std::is_pointer_v<Handle>)
            return reinterpret_cast<Handle>(m_last);
        else
            return static_cast<Handle>(m_last);
    }
    void Add(Handle handle, std::shared_ptr<T> object) {
        const std::scoped_lock lock(m_mutex);
        m_objects.emplace(handle, std::move(object));
    }
    Handle Add(std::shared_ptr<T> object) {
        const Handle handle = Reserve();
        Add(handle, std::move(object));
        return handle;
    }
    // Both return null for a handle that names nothing.
    std::shared_ptr<T> Find(Handle handle) const {
        const std::scoped_lock lock(m_mutex);
        const auto found = m_objects.find(handle);
        return found == m_objects.end() ? nullptr : found->second;
    }
    // The same without the lock, for the thread that alone adds and removes, if there is such a one.
    T* FindHere(Handle handle) const {
        const auto found = m_objects.find(handle);
        return found == m_objects.end() ? nullptr : found->second.get();
    }
    std::shared_ptr<T> Remove(Handle handle) {
        const std::scoped_lock lock(m_mutex);
        const auto node = m_objects.extract(handle);
        return node.empty() ? nullptr : std::move(node.mapped());
    }
    // Calls use(T*) under the lock, with null for a handle that names nothing, and returns its result.
    template <class Use>
    auto With(Handle handle, Use&& use) const {
        const std::scoped_lock lock(m_mutex);
        const auto found = m_objects.find(handle);
        return use(found == m_objects.end() ? nullptr : found->second.get());
    }
    // Holds the table's lock, so that the object stays; not held when the handle names nothing.
    std::unique_lock<std::mutex> Keep(Handle handle) const {
        std::unique_lock lock(m_mutex);
        if (!m_objects.contains(handle)) lock.unlock();
        return lock;
    }
    // All handles, in the order of their creation.
    std::vector<Handle> All() const {
        const std::scoped_lock lock(m_mutex);
        std::vector<Handle> handles;
        handles.reserve(m_objects.size());
        for (const auto& [handle, object] : m_objects) handles.push_back(handle);
        return handles;
    }

private:
    mutable std::mutex m_mutex;
    std::map<Handle, std::shared_ptr<T>> m_objects;
    std::uintptr_t m_last = 0x100;
};
