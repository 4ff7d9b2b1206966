// Tests of the host message slot and the diagnostic trace.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "surface/message_slot.h"
#include "surface/trace.h"
#include "titlerender.h"

namespace {

TEST(MessageSlot, TakenOnceAndTerminated) {
    EXPECT_EQ(TakeLastMessage(), nullptr);
    tr::PostLastMessage("disk cache unavailable");
    EXPECT_STREQ(TakeLastMessage(), "disk cache unavailable");
    EXPECT_EQ(TakeLastMessage(), nullptr);
    const std::string longText(2000, 'x');
    tr::PostLastMessage(longText.c_str());
    EXPECT_EQ(std::string(TakeLastMessage()), std::string(510, 'x'));  // truncated
}

TEST(Trace, DescribingCallsAppendTheirLines) {
    std::filesystem::current_path(std::filesystem::temp_directory_path());  // a relative name outside Windows
    std::filesystem::remove(tr::kTraceFileName);
    tr::SetTraceSwitch(true);
    SurfaceDescriptor d{{nullptr, 0, 0, 0}, 0.0};
    Surface* s = CreateSurface(&d);
    NewCharacterCallBack(s, 0, 0, 0, nullptr, 'A');
    FaceParameters f{40.0, 1.0, 0.5, 0, 0, 0, 0, 0, 0, 0};
    SetFace(s, &f);
    SetFragment(s, nullptr, 4, 0.0, 0.0, 3.0);  // becomes a face shadow
    SetFragment(s, nullptr, 1, 0.0, 0.0, 0.0);  // dropped: no line
    SetColor(s, 10, 0);
    CloseSurface(s);
    tr::SetTraceSwitch(false);
    char ptr[32];
    std::snprintf(ptr, sizeof ptr, "%p", static_cast<void*>(s));
    const std::string expected =
        "\n" + std::string(ptr) + " Create Surface      (data* (nil) W    0 H    0   Pixel Ratio   1.11)\n" +
        "  " + ptr + " NewChCbk  65 'A' \n" +
        "  " + ptr + " SetFace  Sz  40.00  H  1.000  W  0.500\n" +
        ".    " + ptr + " (00) SetFragment FaceShadow         0.00   0.00   3.00\n" +
        "     " + ptr + "   A SetColor  \n" +
        ptr + " Close Surface  \n";
    std::stringstream written;
    written << std::ifstream(tr::kTraceFileName).rdbuf();
    EXPECT_EQ(written.str(), expected);
}

}  // namespace
