// SPDX-License-Identifier: MIT
// CArray: the framework's growable array.
//
// Differences from the framework: RemoveAt and RemoveAll keep the storage, so that a queue that has once
// reached its size allocates no more; Reserve is an addition.
#pragma once

#include <vector>

#include "platform/framework/wintypes.h"

template <class TYPE, class ARG_TYPE>
class CArray {
public:
    int GetSize() const { return static_cast<int>(m_data.size()); }
    // Makes room for n elements beforehand without changing the size.
    void Reserve(int n) { m_data.reserve(static_cast<std::size_t>(n)); }
    int Add(ARG_TYPE element) {
        m_data.push_back(element);
        return GetSize() - 1;
    }
    const TYPE& GetAt(int index) const { return m_data.at(static_cast<std::size_t>(index)); }
    void RemoveAt(int index, int count = 1) {
        m_data.erase(m_data.begin() + index, m_data.begin() + index + count);
    }
    void RemoveAll() { m_data.clear(); }

private:
    std::vector<TYPE> m_data;
};
