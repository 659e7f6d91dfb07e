// SPDX-License-Identifier: MIT
#include "platform/framework/heap.h"

#include <malloc.h>

int _heapmin() {
    malloc_trim(0);
    return 0;
}
