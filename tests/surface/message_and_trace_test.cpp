// Tests of the host message slot and the diagnostic trace.
#include <gtest/gtest.h>

#include <unistd.h>

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

// Runs the trace into a scratch directory (the trace file name is relative
// outside Windows) and returns what was written.
class TraceTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = std::filesystem::temp_directory_path() / ("tr_trace_" + std::to_string(::getpid()));
        std::filesystem::create_directories(dir_);
        std::filesystem::current_path(dir_);
        tr::SetTraceSwitch(true);
    }
    void TearDown() override {
        tr::SetTraceSwitch(false);
        std::filesystem::current_path(previous_);
        std::filesystem::remove_all(dir_);
    }
    std::string Contents() {
        std::stringstream s;
        s << std::ifstream(dir_ / tr::kTraceFileName).rdbuf();
        return s.str();
    }
    std::filesystem::path dir_, previous_ = std::filesystem::current_path();
};

TEST_F(TraceTest, DescribingCallsAppendTheirLines) {
    SurfaceDescriptor d{{nullptr, 0, 0, 0}, 0.0};
    Surface* s = CreateSurface(&d);
    NewCharacterCallBack(s, 0, 0, 0, nullptr, 'A');
    FaceParameters f{40.0, 1.0, 0.5, 0, 0, 0, 0, 0, 0, 0};
    SetFace(s, &f);
    SetFragment(s, nullptr, 4, 0.0, 0.0, 3.0);  // becomes a face shadow
    SetFragment(s, nullptr, 1, 0.0, 0.0, 0.0);  // dropped: no line
    SetColor(s, 10, 0);
    CloseSurface(s);
    char ptr[32];
    std::snprintf(ptr, sizeof ptr, "%p", static_cast<void*>(s));
    const std::string expected =
        "\n" + std::string(ptr) + " Create Surface      (data* (nil) W    0 H    0   Pixel Ratio   1.11)\n" +
        "  " + ptr + " NewChCbk  65 'A' \n" +
        "  " + ptr + " SetFace  Sz  40.00  H  1.000  W  0.500\n" +
        ".    " + ptr + " (00) SetFragment FaceShadow         0.00   0.00   3.00\n" +
        "     " + ptr + "   A SetColor  \n" +
        ptr + " Close Surface  \n";
    EXPECT_EQ(Contents(), expected);
}

}  // namespace
