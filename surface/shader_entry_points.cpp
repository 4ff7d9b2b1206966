// surface/shader_entry_points.cpp — the exported shader primitive factories.
//
// Shader primitives are not part of the library yet: every factory reports
// that no primitive could be made (null), which stack painters ignore.
#include "titlerender.h"

extern "C" {

CShaderMixer* CreateNullMixer(void) { return nullptr; }

CShaderMixer* CreateTestShader(void) { return nullptr; }

CShaderMixer* CreateSetRGBA(int32_t, double, double, double, double) { return nullptr; }

CShaderMixer* CreatePaintOryginPoint(uint32_t) { return nullptr; }

CShaderMixer* CreatePaintFaceExtendsPoints(uint32_t) { return nullptr; }

CShaderMixer* CreatePaintExtendsPoints(uint32_t) { return nullptr; }

CShaderMixer* CreatePaintPoint(int32_t, int32_t, uint32_t) { return nullptr; }

CShaderMixer* CreatePaintLine(int32_t, int32_t, int32_t, int32_t, uint32_t) { return nullptr; }

CShaderMixer* CreatePaintFaceExtendsLines(uint32_t) { return nullptr; }

CShaderMixer* CreatePaintExtendsLines(uint32_t) { return nullptr; }

CShaderMixer* CreateFourCornerRamp(int32_t, int32_t, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double, double) { return nullptr; }

CShaderMixer* CreateClassicShine(int32_t, int32_t, int32_t, double, double, double, double, double, double, double, double, double) { return nullptr; }

CShaderMixer* CreateTwoColorLinearRamp(int32_t, int32_t, int32_t, double, double, double, double, double, double, double, double, double, double, double, double, double) { return nullptr; }

CShaderMixer* CreateTwoColorRadialRamp(int32_t, int32_t, int32_t, double, double, double, double, double, double, double, double, double, double, double, double) { return nullptr; }

CShaderMixer* CreateClassicTexture(int32_t, TextureCallback, uintptr_t) { return nullptr; }

CShaderMixer* CreateMixTint(int32_t, int32_t, int32_t) { return nullptr; }

CShaderMixer* CreateMixKeyKey(int32_t, int32_t, int32_t, float) { return nullptr; }

CShaderMixer* CreateMixAlphaKey(int32_t, int32_t, int32_t, float) { return nullptr; }

CShaderMixer* CreateMixAlphaAlpha(int32_t, int32_t, int32_t, float) { return nullptr; }

CShaderMixer* CreateBevelSimple(int32_t, int32_t, float, float, float, float, float, float, float, float) { return nullptr; }

CShaderMixer* CreateTranslateShadow(int32_t, int32_t) { return nullptr; }

CShaderMixer* CreateDepthBevel(int32_t, int32_t, double, double, uint8_t, float, float, float, float, float, float, float, float) { return nullptr; }

CShaderMixer* CreateDepthLightBevel(int32_t, int32_t, double, double, double, uint8_t, float, float, float, float, float, float, float, float) { return nullptr; }

CShaderMixer* CreateScaleAlpha(int32_t, double) { return nullptr; }

}  // extern "C"
