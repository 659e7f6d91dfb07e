// SPDX-License-Identifier: MIT
// Notifies of a newer instance's requests to close.
#pragma once

#include <functional>

class NamedGuard;

// Calls on_request on the UI thread, from its message loop, whenever a newer instance has asked this one to
// close. The watch is the toolkit's own: it starts no thread and ends with the toolkit, which the guard must
// outlive. Nothing is watched where the guard guards nothing. UI thread, once the toolkit exists.
void WatchForClose(NamedGuard& guard, std::function<void()> on_request);
