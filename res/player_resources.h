// SPDX-License-Identifier: MIT
// The player's compiled resources, embedded in the program.
#pragma once

// Makes them the resources that dialogs, menus, strings and pictures are loaded from. Called once, before the
// first of these is asked for and before another thread is started.
void UsePlayerResources();
