// SPDX-License-Identifier: MIT
// Which message comes next.
#pragma once

#include <vector>

#include "platform/framework/afxstr.h"

// Several messages that were opened together are a queue. A single one stands among the ".trv" files of its
// folder, in natural order; the folder is read when a neighbour is asked for.
class CPlayQueue {
public:
    // Whether the name ends in ".trv", in either case.
    static BOOL IsMessage(const CString& strName);
    // The messages among files that were opened together; a single one is taken whatever its name is.
    static std::vector<CString> MessagesAmong(const std::vector<CString>& files);

    // From now on the first one is the current message; an empty list leaves none.
    void Set(const std::vector<CString>& messages);
    // Absolute, empty for none.
    const CString& Current() const { return m_strCurrent; }

    // Of the current message, or else of the last one that there was; empty before the first.
    const CString& LastFolder() const { return m_strFolder; }

    // Go on, or back, by one and return the message there; empty, and the current one stays, at the end.
    CString Next() { return Go(1); }
    CString Previous() { return Go(-1); }

    // Whether there may be one. Beyond the queue only a look into the folder would tell, so it may be.
    BOOL MayGoNext() const;
    BOOL MayGoPrevious() const;
    // Whether another one of the queue is to be played after the current one.
    BOOL PlaysOn() const { return m_nAt + 1 < m_queue.size(); }

private:
    CString Go(int nStep);
    void SetCurrent(const CString& strPath);
    CString Neighbour(int nStep) const;

    std::vector<CString> m_queue;
    std::size_t m_nAt = 0;
    CString m_strCurrent;
    CString m_strFolder;
};
