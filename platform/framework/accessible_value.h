// SPDX-License-Identifier: MIT
// What assistive programs read and set of a control that shows a value.
#pragma once

#include "platform/framework/afxstr.h"

// Asked on the UI thread, as long as the window lives.
class AccessibleValue {
public:
    virtual double Value() const = 0;  // from 0 on
    virtual double MaximumValue() const = 0;
    // The value as a person reads it.
    virtual CString ValueText() const = 0;
    virtual void SetValue(double value) = 0;

protected:
    ~AccessibleValue() = default;
};
