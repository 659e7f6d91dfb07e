// SPDX-License-Identifier: MIT
// The toolkit behind the layer: Qt Widgets.
#pragma once

#include <memory>

#include "platform/framework/native.h"

class QWidget;

// Creates the toolkit with its application object, ready to be set. argc and argv must
// outlive it. One at a time, on the thread that becomes the UI thread.
std::unique_ptr<NativeToolkit> CreateQtToolkit(int& argc, char** argv);

// The widget that shows the window's client area, null for none; for tests that send it input.
QWidget* WidgetOf(HWND window);
