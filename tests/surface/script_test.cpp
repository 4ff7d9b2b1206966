// Tests of command scripts: recording, cloning, adjusting and playback.
#include "surface/script.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "polygon_glyph.h"
#include "surface/surface.h"
#include "titlerender.h"

namespace {

std::vector<std::string>* gEvents = nullptr;

void Acquire(void* reference, int32_t faceA, int32_t faceB, int32_t userValue) {
    gEvents->push_back("acquire " + std::string(static_cast<const ImageReference*>(reference)->name) +
                       " " + std::to_string(faceA) + " " + std::to_string(faceB) + " " +
                       std::to_string(userValue));
}
void Release(void* reference) {
    gEvents->push_back("release " + std::string(static_cast<const ImageReference*>(reference)->name));
}

class ScriptTest : public ::testing::Test {
protected:
    void SetUp() override { gEvents = &events; }
    void TearDown() override { gEvents = nullptr; }

    Surface* NewSurface() {
        SurfaceDescriptor d{{pixels, 4, 4, 16}, 1.0};
        return CreateSurface(&d);
    }
    static FaceParameters Face(double x) { return FaceParameters{30.0, 1.0, 1.0, 0, 0, 0, x, 0, 0, 0}; }
    static std::vector<const CSetFace*> Faces(const CScript* script) {
        std::vector<const CSetFace*> faces;
        for (const CFunction* c : script->GetCommands()) {
            if (c->GetKind() == 3) faces.push_back(static_cast<const CSetFace*>(c));
        }
        return faces;
    }

    std::vector<std::string> events;
    uint32_t pixels[16] = {};
    ScriptCallbacks callbacks{&Acquire, &Release, sizeof(ImageReference)};
};

// A character recorded while it renders plays back to the same pixels. A
// stack painter is recorded as a null colour.
TEST_F(ScriptTest, PlaybackRendersWhatRecordingRendered) {
    const std::vector<uint8_t> glyph = tr_test::PolygonData(tr_test::kSquare);
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
    Surface* s = NewSurface();
    CScript* script = AttachRecordingScript(s, &callbacks);
    ASSERT_NE(script, nullptr);
    NewCharacterCallBack(s, 0, 0, 0, nullptr, 'A');
    EXPECT_EQ(s->character, nullptr);  // recorded, not carried out
    SetPainterOpacity(s, 0.5);         // neither recorded
    SetCharacterShear(s, 0.1, 0.1);
    EXPECT_EQ(FinishCharacter(s, 0, 0, 0, 0), 0);
    CloseSurface(s);
    CScript* copy = CloneScript(script);
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy->IsClosed());
    ASSERT_EQ(copy->GetCommands().size(), 2u);
    EXPECT_NE(copy->GetCommands().front(), script->GetCommands().front());
    DeleteScript(script);  // the copy stays playable
    SurfaceDescriptor d{{pixels, 4, 4, 16}, 1.0};
    PlayScript(&d, copy, -1);
    DeleteScript(copy);
    EXPECT_EQ(CloneScript(nullptr), nullptr);
    PlayScript(&d, nullptr, 0);
}

// Spreading sorts the faces by x and moves the i-th of n by i * v / (n - 1),
// its integer part into faceA; the list order is unchanged.
TEST_F(ScriptTest, SpreadFacesSortsAndSteps) {
    Surface* s = NewSurface();
    CScript* script = AttachRecordingScript(s, &callbacks);
    for (double x : {30.0, 10.0, 20.0}) {
        FaceParameters f = Face(x);
        SetFace(s, &f);
    }
    CloseSurface(s);
    const double v = 10.0;
    AdjustScript(script, 0, &v);
    const auto faces = Faces(script);
    const double x[3] = {40.0, 10.0, 25.0};
    const int32_t faceA[3] = {10, 0, 5};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(faces[i]->parameters.x, x[i]) << i;
        EXPECT_EQ(faces[i]->faceA, faceA[i]) << i;
    }
    DeleteScript(script);
}

// Moves add to x or y and their integer part, truncated, to faceA or faceB;
// spreading a single face and unknown operations change nothing.
TEST_F(ScriptTest, MoveAdjustments) {
    Surface* s = NewSurface();
    CScript* script = AttachRecordingScript(s, &callbacks);
    FaceParameters f = Face(10.0);
    SetFace(s, &f);
    CloseSurface(s);
    const double minus = -2.7, three = 3.0;
    AdjustScript(script, 4, &minus);
    AdjustScript(script, 5, &minus);
    for (uint32_t operation : {0u, 7u}) AdjustScript(script, operation, &three);
    AdjustScript(script, 4, nullptr);
    const CSetFace* face = Faces(script)[0];
    EXPECT_DOUBLE_EQ(face->parameters.x, 10.0 - 2.7);
    EXPECT_DOUBLE_EQ(face->parameters.y, -2.7);
    EXPECT_EQ(face->faceA, -2);
    EXPECT_EQ(face->faceB, -2);
    DeleteScript(script);
}

TEST_F(ScriptTest, PlaybackHandsReferenceCopiesToHost) {
    Surface* s = NewSurface();
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

    SurfaceDescriptor d{{pixels, 4, 4, 16}, 1.0};
    PlayScript(&d, script, 9);
    PlayScript(&d, script, 9);
    std::vector<std::string> expected;
    for (int play = 0; play < 2; ++play) {
        expected.insert(expected.end(), 3, "acquire marble.png 7 0 9");
        expected.insert(expected.end(), 3, "release marble.png");
    }
    EXPECT_EQ(events, expected);
    DeleteScript(script);
}

// Playback snaps the stored positions again: negative ones move a further
// sixteenth toward zero, positive snapped ones stay.
TEST_F(ScriptTest, PlaybackSnapsFacesAgain) {
    Surface* s = NewSurface();
    CScript* script = AttachRecordingScript(s, &callbacks);
    NewCharacterCallBack(s, 0, 0, 0, nullptr, 'A');
    for (double x : {-1.30, 2.54}) {
        FaceParameters f = Face(x);
        SetFace(s, &f);
    }
    CloseSurface(s);
    EXPECT_EQ(Faces(script)[0]->parameters.x, -1.25);
    SurfaceDescriptor d{{pixels, 4, 4, 16}, 1.0};
    PlayScript(&d, script, 0);
    EXPECT_EQ(Faces(script)[0]->parameters.x, -1.1875);
    EXPECT_EQ(Faces(script)[1]->parameters.x, 2.5625);
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
