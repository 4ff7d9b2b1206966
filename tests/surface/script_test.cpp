// Tests of command scripts: recording, cloning, adjusting and playback.
#include "surface/script.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "polygon_glyph.h"
#include "surface/surface.h"
#include "titlerender.h"

namespace {

std::vector<std::string>* gEvents = nullptr;

void Acquire(void* reference, int32_t faceA, int32_t faceB, int32_t user) {
    gEvents->push_back("acquire " + std::string(static_cast<const ImageReference*>(reference)->name) + " " +
                       std::to_string(faceA) + " " + std::to_string(faceB) + " " + std::to_string(user));
}
void Release(void* reference) {
    gEvents->push_back("release " + std::string(static_cast<const ImageReference*>(reference)->name));
}

class ScriptTest : public ::testing::Test {
protected:
    void SetUp() override { gEvents = &events; }
    void TearDown() override { gEvents = nullptr; }

    static FaceParameters Face(double x) { return FaceParameters{30.0, 1.0, 1.0, 0, 0, 0, x, 0, 0, 0}; }

    std::vector<std::string> events;
    uint32_t pixels[16] = {};
    SurfaceDescriptor small{{pixels, 4, 4, 16}, 1.0};
    ScriptCallbacks callbacks{&Acquire, &Release, sizeof(ImageReference)};
};

// A character recorded while it renders plays back to the same pixels. A
// stack painter is recorded as a null colour.
TEST_F(ScriptTest, PlaybackRendersWhatRecordingRendered) {
    const std::vector<uint8_t> glyph = tr::test::PolygonGlyph(tr_test::kSquare);
    std::vector<uint32_t> recorded(64 * 64, 0), played(64 * 64, 0);
    SurfaceDescriptor d{{recorded.data(), 64, 64, 256}, 1.0};
    Surface* s = CreateSurface(&d);
    CScript* script = AttachScript(s, &callbacks);
    ASSERT_NE(script, nullptr);
    NewCharacterCallBack(s, reinterpret_cast<uintptr_t>(&glyph), tr_test::kPolygonInput | 0x4000,
                         100, &tr_test::PolygonCallback, 'S');
    FaceParameters f{25.0, 1.0, 1.0, 0.2, 0.0, 0.0, 20.5, 40.25, 0.0, 0.0};
    SetFace(s, &f);
    for (uint8_t slot : {2, 3, 4}) {
        const std::vector<uint8_t> map(16, slot);
        const int32_t kind[] = {0, 2, 3}; // face, outer outline, face shadow
        SetFragment(s, map.data(), kind[slot - 2], slot == 3 ? 2.0 : 0.0, 135.0, slot == 4 ? 3.0 : 0.0);
        SetColor(s, slot, 0xC0000000u | 0x404040u * slot);
    }
    SetStackPainter(s, 5, 1);
    ASSERT_EQ(FinishCharacter(s, 0, 0, 0, 0), 1);
    CloseSurface(s);
    EXPECT_TRUE(script->IsClosed());
    std::vector<int32_t> kinds;
    for (const CFunction* c : script->GetCommands()) kinds.push_back(c->GetKind());
    EXPECT_EQ(kinds, (std::vector<int32_t>{2, 3, 4, 9, 4, 9, 4, 9, 7, 5}));
    d.image.pixels = played.data();
    PlayScript(&d, script, 0);
    EXPECT_GT(std::count_if(played.begin(), played.end(), [](uint32_t p) { return p >> 24; }), 500);
    EXPECT_TRUE(played == recorded);
    DeleteScript(script);
}

TEST_F(ScriptTest, RecordOnlySurfaceDoesNotExecuteAndItsCloneIsDeep) {
    Surface* s = CreateSurface(&small);
    CScript* script = AttachRecordingScript(s, &callbacks);
    ASSERT_NE(script, nullptr);
    NewCharacterCallBack(s, 0, 0, 0, nullptr, 'A');
    EXPECT_EQ(s->character, nullptr);  // recorded, not carried out
    SetPainterOpacity(s, 0.5);         // neither recorded
    SetCharacterShear(s, 0.1, 0.1);
    EXPECT_EQ(FinishCharacter(s, 0, 0, 0, 0), 0);
    CloseSurface(s);
    CScript* copy = CloneScript(script);
    ASSERT_TRUE(copy != nullptr && copy->IsClosed());
    ASSERT_EQ(copy->GetCommands().size(), 2u);
    EXPECT_NE(copy->GetCommands().front(), script->GetCommands().front());
    DeleteScript(script);  // the copy stays playable
    PlayScript(&small, copy, -1);
    DeleteScript(copy);
    EXPECT_EQ(CloneScript(nullptr), nullptr);
    PlayScript(&small, nullptr, 0);
}

// Spreading sorts the faces by x and moves the i-th of n by i * v / (n - 1);
// moves add to x or y. The integer parts, truncated, go to faceA and faceB;
// unknown operations and null values change nothing. Playback snaps the
// stored positions again, to trunc(16 v + 0.5) / 16.
TEST_F(ScriptTest, FaceAdjustmentsAndPlaybackSnap) {
    Surface* s = CreateSurface(&small);
    CScript* script = AttachRecordingScript(s, &callbacks);
    for (FaceParameters f : {Face(30.0), Face(10.0), Face(20.0)}) SetFace(s, &f);
    CloseSurface(s);
    const double ten = 10.0, minus = -2.7;
    AdjustScript(script, 0, &ten);
    AdjustScript(script, 4, &minus);
    AdjustScript(script, 5, &minus);
    AdjustScript(script, 7, &ten);
    AdjustScript(script, 4, nullptr);
    std::vector<const CSetFace*> faces;  // list order is unchanged
    for (const CFunction* c : script->GetCommands()) faces.push_back(dynamic_cast<const CSetFace*>(c));
    ASSERT_EQ(faces.size(), 3u);
    const double x[3] = {30.0 + 10.0 + minus, 10.0 + minus, 20.0 + 5.0 + minus};
    const int32_t faceA[3] = {10 - 2, 0 - 2, 5 - 2};
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(faces[i]->parameters.x == x[i] && faces[i]->parameters.y == minus) << i;
        EXPECT_TRUE(faces[i]->faceA == faceA[i] && faces[i]->faceB == -2) << i;
    }
    PlayScript(&small, script, 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(faces[i]->parameters.x, std::trunc(x[i] * 16.0 + 0.5) / 16.0) << i;
        EXPECT_EQ(faces[i]->parameters.y, -2.625) << i;  // -42.7 truncates toward zero
    }
    DeleteScript(script);
}

TEST_F(ScriptTest, PlaybackHandsReferenceCopiesToHost) {
    Surface* s = CreateSurface(&small);
    CScript* script = AttachRecordingScript(s, &callbacks);
    NewCharacterCallBack(s, 0, 0, 0, nullptr, 'A');
    FaceParameters f = Face(6.0);
    SetFace(s, &f);
    const double dx = 7.0;
    std::string name = "marble.png";
    ImageReference reference{name.c_str()};
    RampRecord ramp{};
    BevelRecord bevel{};
    SetRamp(s, 2, &ramp, nullptr, nullptr, &reference);
    SetRamp(s, 3, &ramp, nullptr, nullptr, nullptr);  // no reference: no callbacks
    SetBevel(s, 4, &bevel, nullptr, nullptr, &reference);
    TextureRecord texture{};
    texture.userValue = reinterpret_cast<uintptr_t>(&reference);
    SetClassicPainter(s, 5, nullptr, &texture, nullptr);
    CloseSurface(s);
    name = "overwritten";  // the script keeps its own copy of the name
    AdjustScript(script, 4, &dx);

    PlayScript(&small, script, 9);
    PlayScript(&small, script, 9);
    std::vector<std::string> expected;
    for (int play = 0; play < 2; ++play) {
        expected.insert(expected.end(), 3, "acquire marble.png 7 0 9");
        expected.insert(expected.end(), 3, "release marble.png");
    }
    EXPECT_EQ(events, expected);
    DeleteScript(script);
}

TEST(ReferenceArea, LongNamesAndBlocksAreTruncated) {
    const std::string name(400, 'n');
    struct {
        const char* name;
        uint8_t data[600];
    } big{name.c_str(), {}};
    ReferenceArea area;
    area.CopyFrom(reinterpret_cast<const ImageReference*>(&big), sizeof big);
    const char* copied = reinterpret_cast<const char*>(area.bytes + 256);
    EXPECT_EQ(std::string(copied), std::string(255, 'n'));
    area.PointNameAtCopy();
    EXPECT_EQ(reinterpret_cast<const ImageReference*>(area.bytes)->name, copied);
}

}  // namespace
