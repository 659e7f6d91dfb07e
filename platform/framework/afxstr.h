// SPDX-License-Identifier: MIT
// CString: the framework's string class over UTF-8 text.
//
// Differences from the framework: one build of it (char), no buffer access, Format takes the printf formats
// of the C library. Positions and lengths count bytes.
#pragma once

#include <string>
#include <string_view>

#include "platform/framework/wintypes.h"

class CString {
public:
    CString() = default;
    CString(LPCTSTR text) : m_text(text == nullptr ? "" : text) {}
    CString(std::string text) : m_text(std::move(text)) {}
    CString(std::string_view text) : m_text(text) {}

    operator LPCTSTR() const { return m_text.c_str(); }
    const std::string& Str() const { return m_text; }

    int GetLength() const { return static_cast<int>(m_text.size()); }
    BOOL IsEmpty() const { return m_text.empty() ? TRUE : FALSE; }
    void Empty() { m_text.clear(); }
    char operator[](int i) const { return m_text[static_cast<std::size_t>(i)]; }

    // Position of the first occurrence, or -1.
    int Find(LPCTSTR text) const;
    // Position of the last occurrence of the character, or -1.
    int ReverseFind(char c) const;
    // The last n characters, or all of them when there are fewer.
    CString Right(int n) const;
    // From position first to the end.
    CString Mid(int first) const;
    // ASCII letters only.
    void MakeLower();

    // Replaces the text by the formatted one; the format is text or a string resource's id.
    void Format(LPCTSTR format, ...) __attribute__((format(printf, 2, 3)));
    void Format(UINT nFormatID, ...);
    // Loads a string resource; FALSE (and an empty string) when there is none.
    BOOL LoadString(UINT nID);

    CString& operator+=(const CString& other) {
        m_text += other.m_text;
        return *this;
    }
    friend CString operator+(const CString& a, const CString& b) { return CString(a.m_text + b.m_text); }
    friend CString operator+(const CString& a, LPCTSTR b) { return CString(a.m_text + b); }
    friend bool operator==(const CString& a, const CString& b) { return a.m_text == b.m_text; }
    friend bool operator==(const CString& a, LPCTSTR b) { return a.m_text == b; }

private:
    std::string m_text;
};
