// SPDX-License-Identifier: MIT
#include "platform/framework/drop_files.h"

#include "platform/framework/afxwin.h"

UINT DragQueryFileCount(HDROP drop) {
    return static_cast<UINT>(drop->paths.size());
}

CString DragQueryFile(HDROP drop, UINT index) {
    return index < drop->paths.size() ? CString(drop->paths[index]) : CString();
}
