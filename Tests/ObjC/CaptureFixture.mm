#include "ObjC/CaptureFixture.h"

std::string tallyfoot::testing::ObjCCapture::recorded() {
    const auto all = records();
    std::string text;
    for (; seen_ < all.size(); ++seen_) {
        std::string event;
        for (const char* key : {"evtType", "evtCategory", "evtAction", "evtLabel"})
            if (all[seen_].contains(key)) event += (event.empty() ? "" : " ") + all[seen_][key].get<std::string>();
        text += (text.empty() ? "" : "; ") + event;
    }
    return text;
}
