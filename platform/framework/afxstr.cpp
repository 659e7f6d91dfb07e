// SPDX-License-Identifier: MIT
#include "platform/framework/afxstr.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "platform/framework/resources.h"

namespace {

[[gnu::format(printf, 1, 0)]] std::string FormatText(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

}  // namespace

int CString::Find(LPCTSTR text) const {
    const std::size_t at = m_text.find(text);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::ReverseFind(char c) const {
    const std::size_t at = m_text.rfind(c);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

CString CString::Right(int n) const {
    const int count = std::clamp(n, 0, GetLength());
    return CString(m_text.substr(m_text.size() - static_cast<std::size_t>(count)));
}

CString CString::Mid(int first) const {
    return CString(m_text.substr(static_cast<std::size_t>(std::clamp(first, 0, GetLength()))));
}

void CString::MakeLower() {
    for (char& c : m_text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
}

void CString::Format(LPCTSTR format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = FormatText(format, arguments);
    va_end(arguments);
    m_text = std::move(text);
}

// The format comes from the program's own string table, where the compiler cannot see it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
void CString::Format(UINT nFormatID, ...) {
    CString format;
    format.LoadString(nFormatID);
    std::va_list arguments;
    va_start(arguments, nFormatID);
    std::string text = FormatText(format, arguments);
    va_end(arguments);
    m_text = std::move(text);
}
#pragma GCC diagnostic pop

BOOL CString::LoadString(UINT nID) {
    m_text = resources::LoadString(nID);
    return m_text.empty() ? FALSE : TRUE;
}
