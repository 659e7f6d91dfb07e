#pragma once

// Linked into a program, this takes the place of operator new, to count allocations and to refuse them.

extern long allocations;  // so far
extern long refuse_from;  // none is given when there have been this many; -1: all are
