// SPDX-License-Identifier: MIT
// The framework's basic types, as this system's 64-bit build has them.
//
// Differences from the framework: text is UTF-8 in char; LONG and DWORD are 32 bits as there; handles are
// numbers that are never reused, so a stale handle is recognised and never names a newer object.
#pragma once

#include <cstddef>
#include <cstdint>

using BOOL = int;
inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using UINT = unsigned int;
using DWORD_PTR = std::uintptr_t;
using UINT_PTR = std::uintptr_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using LPCTSTR = const char*;
using COLORREF = DWORD;  // 0x00BBGGRR

// Opaque handles: the pointer's value is the handle's number and is never dereferenced.
using HWND = struct HWND_*;
using HICON = struct HICON_*;
using HCURSOR = HICON;

struct POINT {
    LONG x;
    LONG y;
};

struct SIZE {
    LONG cx;
    LONG cy;
};

// Left and top lie inside the rectangle, right and bottom just outside it.
struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

constexpr COLORREF RGB(unsigned r, unsigned g, unsigned b) {
    return (r & 0xFFU) | (g & 0xFFU) << 8U | (b & 0xFFU) << 16U;
}
constexpr BYTE GetRValue(COLORREF c) {
    return static_cast<BYTE>(c & 0xFFU);
}
constexpr BYTE GetGValue(COLORREF c) {
    return static_cast<BYTE>(c >> 8U & 0xFFU);
}
constexpr BYTE GetBValue(COLORREF c) {
    return static_cast<BYTE>(c >> 16U & 0xFFU);
}
constexpr WORD LOWORD(DWORD_PTR v) {
    return static_cast<WORD>(v & 0xFFFFU);
}
constexpr WORD HIWORD(DWORD_PTR v) {
    return static_cast<WORD>(v >> 16U & 0xFFFFU);
}

inline constexpr DWORD INFINITE = 0xFFFFFFFFU;
