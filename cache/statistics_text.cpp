// cache/statistics_text.cpp — texts, totals and the append rule of the
// statistics dump.
#include "cache/statistics_text.h"

#include <cassert>
#include <cstdio>
#include <cstring>

namespace tr {

CStatisticsText::CStatisticsText(char* buffer, uint32_t capacity)
    : remaining_(capacity), buffer_(buffer) {
    assert(buffer != nullptr && "the caller supplies the text buffer");
}

bool CStatisticsText::Append(const char* piece) {
    if (stopped_) {
        return false;
    }
    const size_t length = std::strlen(piece);
    if (length > remaining_) {
        stopped_ = true;
        return false;
    }
    // The piece fits, so bounding by the room appends all of it.
    std::strncat(buffer_, piece, remaining_);
    remaining_ -= static_cast<uint32_t>(length);
    return true;
}

bool CStatisticsText::AppendLabelled(const char* label, int32_t value) {
    char number[16];
    std::snprintf(number, sizeof number, "%d", value);
    return Append(label) && Append(number);
}

bool CStatisticsText::AppendBox(const BoxStatistics& box) {
    if (!Append("Factory_Box:") || !AppendLabelled("\n Cost in Memory: ", box.cost)) {
        return false;
    }
    if (!AppendLabelled("\n Reference Count: ", box.refCount)) {
        return false;
    }
    totalReferences_ += box.refCount;
    if (!AppendLabelled("\n Hit Count: ", box.hitCount)) {
        return false;
    }
    totalHits_ += box.hitCount;
    if (!AppendLabelled("\n Miss Count: ", box.missCount)) {
        return false;
    }
    totalMisses_ += box.missCount;

    // The ratio is computed in single precision; "%f" prints it widened.
    const float ratio = static_cast<float>(box.hitCount) /
                        static_cast<float>(box.hitCount + box.missCount);
    char ratioText[64];
    std::snprintf(ratioText, sizeof ratioText, "%f", static_cast<double>(ratio));
    if (!Append("\n Hit Ratio: ") || !Append(ratioText)) {
        return false;
    }
    if (!AppendLabelled("\n Num Times Swapped In: ", box.swapInCount) ||
        !AppendLabelled("\n Num Times Swapped Out: ", box.swapOutCount)) {
        return false;
    }
    if (box.cached) {
        if (!Append("\n Is currently cached.")) {
            return false;
        }
        ++entriesCached_;
    } else if (!Append("\n Is not currently cached.")) {
        return false;
    }
    ++entriesSeen_;
    return Append("\n");
}

void CStatisticsText::AppendSummary() {
    // The ratio of the totals is computed in double precision.
    const double ratio = static_cast<double>(totalHits_) /
                         (static_cast<double>(totalMisses_) + static_cast<double>(totalHits_));
    char summary[512];
    std::snprintf(summary, sizeof summary,
                  "Hit Count: %d\nMiss Count: %d\nHit Ratio: %lf\nRef Count: %d\n"
                  " Total Currently Cached: %d\n Total FBs: %d\n",
                  totalHits_, totalMisses_, ratio, totalReferences_, entriesCached_,
                  entriesSeen_);
    (void)Append(summary);
}

}  // namespace tr
