/*
 * titlerender.h — public C interface of the titlerender library.
 *
 * A host describes a surface (its own 32-bit BGRA pixel buffer), then each
 * character in turn — outline source, face geometry, fragments, painters —
 * finishes it, and finally closes the surface, which composites every
 * finished character into the host's pixels. The library can also record the
 * describing calls as a command script and play it back, keeps a cache of
 * converted glyph outlines, and fills host images with gradients.
 *
 * Conventions shared by every entry point:
 *  - Pixels and packed colours are 32-bit words: bits 0-7 blue, 8-15 green,
 *    16-23 red, 24-31 alpha; straight (not premultiplied) alpha.
 *  - No entry point reports an error; degenerate input has a defined result.
 *    A null Surface pointer makes every surface call do nothing (and return
 *    0 or null where a result is expected).
 *  - One thread per surface at a time; characters are rendered one at a
 *    time process-wide.
 *  - Every record below has the field order of the host ABI. On a 32-bit
 *    build each record has exactly the documented byte offsets (checked by
 *    static assertions at the end of this file). Fields that carry a host
 *    address or host value are native pointers / uintptr_t, so a 64-bit
 *    build keeps the order but not the offsets.
 */
#ifndef TITLERENDER_H
#define TITLERENDER_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#if defined(_WIN32)
#  if defined(TR_BUILDING_LIBRARY)
#    define TR_API __declspec(dllexport)
#  else
#    define TR_API __declspec(dllimport)
#  endif
#elif defined(__GNUC__)
#  define TR_API __attribute__((visibility("default")))
#else
#  define TR_API
#endif

#ifdef __cplusplus
/* Opaque handles; the library defines them at global scope. */
struct Surface;
class CScript;
class CShaderMixer;
extern "C" {
#else
typedef struct Surface Surface;
typedef struct CScript CScript;
typedef struct CShaderMixer CShaderMixer;
#endif

/* ------------------------------------------------------------------------ */
/* Host records                                                             */
/* ------------------------------------------------------------------------ */

/* Image block (16 bytes on 32-bit): a host pixel buffer. Rows run top to
 * bottom; row r starts stride / 4 pixels (integer division) after row r - 1,
 * so a negative stride steps upward. */
typedef struct ImageBlock {
    uint32_t* pixels; /*  0 */
    int32_t width;    /*  4 */
    int32_t height;   /*  8 */
    int32_t stride;   /* 12, bytes from one row to the next */
} ImageBlock;

/* Surface descriptor (24 bytes on 32-bit), copied into the surface. */
typedef struct SurfaceDescriptor {
    ImageBlock image;  /*  0 */
    double pixelRatio; /* 16, width of a pixel over its height; 0.0 means 10/9 */
} SurfaceDescriptor;

/* Face geometry of one character (80 bytes: ten doubles). */
typedef struct FaceParameters {
    double size;        /*  0 */
    double heightScale; /*  8 */
    double widthScale;  /* 16 */
    double slantA;      /* 24, radians */
    double slantB;      /* 32, radians */
    double rotation;    /* 40, radians */
    double x;           /* 48, target pixels; snapped to 1/16 by SetFace */
    double y;           /* 56 */
    double taperH;      /* 64, percent */
    double taperV;      /* 72, percent */
} FaceParameters;

/* Image reference handed to texture callbacks as their user value. Only the
 * name is read by the library; up to ScriptCallbacks.referenceSize bytes of
 * the block (name pointer included) are copied when a script records it. */
typedef struct ImageReference {
    const char* name; /* 0, NUL-terminated */
    /* host data follows */
} ImageReference;

/* Script callbacks (12 bytes on 32-bit). */
typedef struct ScriptCallbacks {
    void (*acquire)(void* reference, int32_t faceA, int32_t faceB, int32_t userValue); /* 0 */
    void (*release)(void* reference);                                                /* 4 */
    uint32_t referenceSize;                                                          /* 8 */
} ScriptCallbacks;

/* Host texture callback: colour of target pixel (x, y). */
typedef uint32_t (*TextureCallback)(int32_t x, int32_t y, uintptr_t userValue);

/* Host glyph callback. With bufferSize 0 and a null buffer it returns the
 * number of bytes the outline needs; with a buffer it fills it and returns a
 * positive value on success. matrix is a 2x2 16.16 fixed-point matrix
 * {m11, m12, m21, m22}; metrics points at a 20-byte record. */
typedef int32_t (*GlyphOutlineCallback)(uintptr_t context, uint32_t characterCode, void* metrics,
                                        uint32_t bufferSize, void* buffer, const int32_t* matrix);

/* Texture style block (32 bytes). */
typedef struct TextureStyle {
    int32_t mode;                 /*  0, 0 alpha mix, 1 tint, 2 keyed (classic only) */
    uint32_t reserved4;           /*  4 */
    double mix;                   /*  8, 0..1 */
    double textureAlphaExponent;  /* 16 */
    double gradientAlphaExponent; /* 24, the ramp's alpha exponent */
} TextureStyle;

/* Four-corner ramp record (64 bytes). The same layout is the parameter block
 * of FillFourCornerGradient (which does not read bytes 0-15) and of
 * RenderClassicGradientSampled (which reads `angle` as an extra rotation). */
typedef struct RampRecord {
    uint8_t reserved0[8];  /*  0, not read */
    double angle;          /*  8, radians */
    uint32_t corners[4];   /* 16, top-left, top-right, bottom-right, bottom-left */
    double shineWidth;     /* 32, pixels; 0 disables the shine */
    uint32_t shineColour;  /* 40 */
    uint32_t reserved44;   /* 44 */
    double shineAngle;     /* 48, radians */
    double shinePosition;  /* 56, in half-diagonals */
} RampRecord;
typedef RampRecord FourCornerGradientParameters;
typedef RampRecord SampledGradientParameters;

/* Bevel record (96 bytes). */
typedef struct BevelRecord {
    uint32_t kind;            /*  0, 0 eFlatOut, 2 eGlow, 3 eFlatIn, 5 ePipe */
    uint8_t joinsNeighbours;  /*  4 */
    uint8_t twoChannel;       /*  5 */
    uint8_t fold;             /*  6 */
    uint8_t reserved7;        /*  7 */
    double gain;              /*  8 */
    double layerMix;          /* 16 */
    uint32_t lightColour;     /* 24 */
    uint32_t darkColour;      /* 28 */
    double balance;           /* 32 */
    double lightAngle;        /* 40, degrees */
    double size;              /* 48, character units */
    const uint8_t* profile;   /* 56, 256 bytes or null */
#if UINTPTR_MAX == 0xFFFFFFFFu
    uint32_t reserved60;      /* 60 */
#endif
    double shineWidth;        /* 64 */
    uint32_t shineColour;     /* 72 */
    uint32_t reserved76;      /* 76 */
    double shineAngle;        /* 80, radians */
    double shinePosition;     /* 88 */
} BevelRecord;

/* Classic painter record (80 bytes), also the parameter block of
 * RenderClassicGradient. */
typedef struct ClassicRecord {
    uint32_t radial;        /*  0, 0 linear, otherwise radial */
    uint32_t colour1;       /*  4 */
    uint32_t colour2;       /*  8 */
    uint32_t reserved12;    /* 12 */
    double start;           /* 16, percent */
    double end;             /* 24, percent */
    double angle;           /* 32, radians (skew; centre shift when radial) */
    uint32_t repeats;       /* 40, 0 = a single transition */
    uint32_t reserved44;    /* 44 */
    double shineWidth;      /* 48, 0 disables the shine */
    uint32_t shineColour;   /* 56 */
    uint32_t reserved60;    /* 60 */
    double shineAngle;      /* 64, radians */
    double shinePosition;   /* 72 */
} ClassicRecord;
typedef ClassicRecord ClassicGradientParameters;

/* Texture record (16 bytes on 32-bit). */
typedef struct TextureRecord {
    TextureCallback callback; /*  0, may be null */
    uintptr_t userValue;      /*  4, usually a const ImageReference* */
    uint32_t alphaSource;     /*  8, 0 none, 1 red, 2 green, 3 blue, 4 alpha */
    uint8_t tint;             /* 12 */
    uint8_t invert;           /* 13 */
    uint8_t reserved14[2];    /* 14 */
} TextureRecord;

/* Stack layer descriptor (32 bytes). */
typedef struct LayerDescriptor {
    uint32_t kind;       /*  0, 0 = no layer */
    uint32_t reserved4;  /*  4 */
    double a;            /*  8 */
    double b;            /* 16 */
    int32_t n;           /* 24 */
    uint32_t reserved28; /* 28 */
} LayerDescriptor;

/* Fragment kinds of SetFragment. */
enum {
    TR_FRAGMENT_FACE = 0,
    TR_FRAGMENT_OUTLINE_IN = 1,
    TR_FRAGMENT_OUTLINE_OUT = 2,
    TR_FRAGMENT_FACE_SHADOW = 3,
    TR_FRAGMENT_OUTLINE_IN_SHADOW = 4,
    TR_FRAGMENT_OUTLINE_OUT_SHADOW = 5,
    TR_FRAGMENT_SMEAR_VERTICAL = 6,
    TR_FRAGMENT_SMEAR_HORIZONTAL = 7,
    TR_FRAGMENT_SHIFTED_Y_SHADOW = 8,
    TR_FRAGMENT_SHIFTED_X_SHADOW = 9
};

/* Character option bits of NewCharacterCallBack. */
enum {
    TR_CHARACTER_POLYGON_INPUT = 0x200,   /* glyph data are polygons of doubles */
    TR_CHARACTER_WIDE_OUTLINES = 0x400,   /* outline fragments get a widened twin */
    TR_CHARACTER_SINGLE_PATH = 0x1000,    /* one self-overlapping path (non-zero) */
    TR_CHARACTER_SINGLE_PATH_ODD = 0x2000,/* one self-overlapping path (odd) */
    TR_CHARACTER_NO_CACHE = 0x4000,       /* build the outline, bypass the caches */
    TR_CHARACTER_OPTION_A_OFF = 0x8000
};

/* ------------------------------------------------------------------------ */
/* Surface and characters                                                   */
/* ------------------------------------------------------------------------ */

/* Ordinal 1. Copies the descriptor into a new surface. A null descriptor
 * gives a surface on an empty (0 x 0, null pixels) image. Returns null only
 * when memory cannot be obtained. */
TR_API Surface* CreateSurface(const SurfaceDescriptor* descriptor);

/* Ordinal 2. Composites every finished character into the pixels and frees
 * the surface. An attached script is closed to recording, not destroyed. */
TR_API void CloseSurface(Surface* surface);

/* Ordinal 3. ORs bits into the current character's outline flags and returns
 * the bits; without a current character nothing is stored. Not recorded. */
TR_API uint32_t AddOutlineFlags(Surface* surface, uint32_t bits);

/* Ordinal 4. Snaps X and Y of the caller's block in place to 1/16 pixel
 * (trunc(v * 16 + 0.5) / 16), then stores the face. A null block does
 * nothing. */
TR_API void SetFace(Surface* surface, FaceParameters* face);

/* Ordinal 5. Adds a fragment to the current character. nibbleMap may be null
 * (the fragment then only enlarges the image box). A kind outside 0-9 is
 * kept and drawn as a face. Without a current character the call is only
 * recorded. */
TR_API void SetFragment(Surface* surface, const uint8_t* nibbleMap, int32_t kind, double width,
                        double angle, double distance);

/* Ordinal 6. Renders the current character; returns its plan index, or 0
 * when only recording or when nothing was drawn. */
TR_API int32_t FinishCharacter(Surface* surface, int32_t mode, uint32_t options, uint32_t userValue1,
                               uint32_t userValue2);

/* Ordinal 7. Ends the previous character and starts a new one. sourceA is
 * the glyph context handed back to the callback, sourceC the outline size,
 * sourceD the glyph callback (null: no outline is fetched). */
TR_API void NewCharacterCallBack(Surface* surface, uintptr_t sourceA, uint32_t characterFlags,
                                 uint32_t sourceC, GlyphOutlineCallback sourceD,
                                 uint32_t characterCode);

/* Ordinal 8. Opacity of the current character's painters (1.0 by default).
 * Not recorded; without a current painter set nothing happens. */
TR_API void SetPainterOpacity(Surface* surface, double opacity);

/* Ordinal 9. Character shears in radians, reset by NewCharacterCallBack.
 * Not recorded. */
TR_API void SetCharacterShear(Surface* surface, double shearX, double shearY);

/* Ordinals 10 and 11. Install a null (transparent) or flat colour in a
 * painter slot 0-15; any slot above 15 (or below 0) selects slot 1, whose
 * sub-samples are never painted. */
TR_API void SetNullColor(Surface* surface, int32_t slot);
TR_API void SetColor(Surface* surface, int32_t slot, uint32_t colour);

/* Ordinal 12 (also exported by name). Purges the memory recycler that
 * supplies coverage buffers; returns what the purge reports. */
TR_API uint32_t FlushRazterizerRecyclerMemory(void);

/* Ordinal 14. Installs the soft shadow of the current character (painter
 * slot 16). Softness below 0 gives no blur. */
TR_API void SetSoftShadowColor(Surface* surface, int32_t knockOut, double softness, uint32_t colour,
                               double shiftX, double shiftY, double extra);

/* Ordinal 15. Explicit painter rectangle (centre in target pixels,
 * half-sizes, angle in radians) for the applicator in slot 0-15; slot 16, an
 * out-of-range slot or an empty slot changes nothing. */
TR_API void SetRectangleForPainter(Surface* surface, int32_t slot, double centreX, double centreY,
                                   double halfWidth, double halfHeight, double angle);

/* Ordinal 16. Classic painter; classic and texture records may be null. A
 * null style block is read as all zero. */
TR_API void SetClassicPainter(Surface* surface, int32_t slot, const ClassicRecord* classic,
                              const TextureRecord* texture, const TextureStyle* style);

/* Ordinals 17 and 18. Ramp and bevel painters. callback, style and
 * userValue may be null (a null style reads as all zero); a null record does
 * nothing and is not recorded. SetBevel also adds an outer outline fragment
 * as wide as the bevel (1.42 times that with wide outlines). */
TR_API void SetRamp(Surface* surface, int32_t slot, const RampRecord* ramp, TextureCallback callback,
                    const TextureStyle* style, const ImageReference* userValue);
TR_API void SetBevel(Surface* surface, int32_t slot, const BevelRecord* bevel,
                     TextureCallback callback, const TextureStyle* style,
                     const ImageReference* userValue);

/* Ordinals 19-21. Stack painters: slot 0-16 (above 16 selects slot 1).
 * Adding a primitive hands it to the stack painter, which then owns it; a
 * slot without a stack painter ignores the call (the primitive stays the
 * host's). A null primitive or descriptor, or a layer outside 0-3, does
 * nothing. */
TR_API void SetStackPainter(Surface* surface, int32_t slot, uint8_t joinsNeighbours);
TR_API void AddToStackPainter(Surface* surface, int32_t slot, CShaderMixer* mixer);
TR_API void SetStackLayer(Surface* surface, int32_t slot, int32_t layer,
                          const LayerDescriptor* descriptor);

/* Ordinals 90 and 91. Record pools: invalidation by key and budgets in MiB
 * (values below 1 count as 1). */
TR_API void InvalidatePooledCharacters(uint32_t keyA, uint32_t keyB);
TR_API void SetPoolBudgets(int32_t shapeMiB, int32_t shadowMiB, int32_t painterMiB);

/* Ordinal 99. Three bytes of the surface reserved for the host. */
TR_API uint8_t* GetSurfaceHostBytes(Surface* surface);

/* Ordinal 101. The pending library message, or null. */
TR_API const char* TakeLastMessage(void);

/* ------------------------------------------------------------------------ */
/* Gradient generators (write every pixel of the image block)               */
/* ------------------------------------------------------------------------ */

/* Ordinal 100. Returns the number of rows written (0 when height < 1). */
TR_API uint32_t FillFourCornerGradient(const ImageBlock* image,
                                       const FourCornerGradientParameters* parameters);
/* Ordinal 130. */
TR_API void FillSolid(const ImageBlock* image, uint32_t colour);
/* Ordinal 131. A null parameter block does nothing. */
TR_API void RenderClassicGradient(const ImageBlock* image, double x0, double y0, double halfWidth,
                                  double halfHeight, double angle, double originX, double originY,
                                  const ClassicGradientParameters* parameters,
                                  const TextureRecord* texture);
/* Ordinal 133. */
TR_API void RenderClassicGradientSampled(const ImageBlock* image, double x0, double y0,
                                         double halfWidth, double halfHeight, double angle,
                                         double originX, double originY,
                                         const SampledGradientParameters* parameters,
                                         TextureCallback callback, const TextureStyle* style,
                                         uintptr_t userValue);

/* ------------------------------------------------------------------------ */
/* Command scripts                                                          */
/* ------------------------------------------------------------------------ */

/* Ordinal 107. Attaches a new script that records every describing call
 * while the surface keeps rendering. Returns null (and attaches nothing) for
 * a null surface or null callbacks. */
TR_API CScript* AttachScript(Surface* surface, const ScriptCallbacks* callbacks);
/* Ordinal 112. As AttachScript, but the surface only records from now on. */
TR_API CScript* AttachRecordingScript(Surface* surface, const ScriptCallbacks* callbacks);
/* Ordinal 108. Plays a script onto a fresh surface on the descriptor;
 * userValue -1 means 0. */
TR_API void PlayScript(const SurfaceDescriptor* descriptor, CScript* script, int32_t userValue);
/* Ordinal 109. Destroys a script (null is ignored). */
TR_API void DeleteScript(CScript* script);
/* Ordinal 110. Deep copy, closed to recording; null gives null. */
TR_API CScript* CloneScript(const CScript* script);
/* Ordinal 111. Numeric edits of recorded commands; operations above 5 and
 * null arguments do nothing. */
TR_API void AdjustScript(CScript* script, uint32_t operation, const double* value);

/* ------------------------------------------------------------------------ */
/* Character caches                                                         */
/* ------------------------------------------------------------------------ */

/* Ordinal 150. True only when this call created the memory cache. */
TR_API bool CreateCharacterCaches(void);
/* Ordinal 151. True when the disk cache existed. */
TR_API bool DestroyCharacterCaches(void);

/* ------------------------------------------------------------------------ */
/* Shader primitive factories (stack painters). Colours are red, green,     */
/* blue, alpha on the 0..255 scale; registers 0-15, layers 0-3. Each returns */
/* a primitive owned by the host until it is added to a stack painter, or   */
/* null when it cannot be made.                                             */
/* ------------------------------------------------------------------------ */

TR_API CShaderMixer* CreateNullMixer(void);                                            /* 221 */
TR_API CShaderMixer* CreateTestShader(void);                                           /* 230 */
TR_API CShaderMixer* CreateSetRGBA(int32_t reg, double red, double green, double blue,
                                   double alpha);                                      /* 250 */
TR_API CShaderMixer* CreatePaintOryginPoint(uint32_t colour);                          /* 251 */
TR_API CShaderMixer* CreatePaintFaceExtendsPoints(uint32_t colour);                    /* 252 */
TR_API CShaderMixer* CreatePaintExtendsPoints(uint32_t colour);                        /* 253 */
TR_API CShaderMixer* CreatePaintPoint(int32_t x, int32_t y, uint32_t colour);          /* 255 */
TR_API CShaderMixer* CreatePaintLine(int32_t x0, int32_t y0, int32_t x1, int32_t y1,
                                     uint32_t colour);                                 /* 256 */
TR_API CShaderMixer* CreatePaintFaceExtendsLines(uint32_t colour);                     /* 262 */
TR_API CShaderMixer* CreatePaintExtendsLines(uint32_t colour);                         /* 263 */
TR_API CShaderMixer* CreateFourCornerRamp(
    int32_t dst, int32_t geometryMode,
    double x0, double y0, double r0, double g0, double b0, double a0,
    double x1, double y1, double r1, double g1, double b1, double a1,
    double x2, double y2, double r2, double g2, double b2, double a2,
    double x3, double y3, double r3, double g3, double b3, double a3);              /* 270 */
TR_API CShaderMixer* CreateClassicShine(int32_t dst, int32_t src, int32_t geometryMode,
                                        double width, double x0, double y0, double x1,
                                        double y1, double red, double green, double blue,
                                        double shineAlpha);                            /* 271 */
TR_API CShaderMixer* CreateTwoColorLinearRamp(
    int32_t dst, int32_t geometryMode, int32_t repeats, double width,
    double x0, double y0, double x1, double y1,
    double redA, double greenA, double blueA, double alphaA,
    double redB, double greenB, double blueB, double alphaB);                          /* 272 */
TR_API CShaderMixer* CreateTwoColorRadialRamp(
    int32_t dst, int32_t geometryMode, int32_t repeats, double centreX, double centreY,
    double outerRadius, double innerRadius,
    double redA, double greenA, double blueA, double alphaA,
    double redB, double greenB, double blueB, double alphaB);                          /* 273 */
TR_API CShaderMixer* CreateClassicTexture(int32_t dst, TextureCallback callback,
                                          uintptr_t userValue);                        /* 274 */
TR_API CShaderMixer* CreateMixTint(int32_t dst, int32_t regA, int32_t regB);           /* 281 */
TR_API CShaderMixer* CreateMixKeyKey(int32_t dst, int32_t regA, int32_t regB, float mix); /* 282 */
TR_API CShaderMixer* CreateMixAlphaKey(int32_t dst, int32_t regA, int32_t regB,
                                       float mix);                                     /* 283 */
TR_API CShaderMixer* CreateMixAlphaAlpha(int32_t dst, int32_t regA, int32_t regB,
                                         float mix);                                   /* 284 */
TR_API CShaderMixer* CreateBevelSimple(int32_t dst, int32_t layer,
                                       float red1, float green1, float blue1, float alpha1,
                                       float red2, float green2, float blue2,
                                       float alpha2);                                  /* 290 */
TR_API CShaderMixer* CreateTranslateShadow(int32_t shiftX, int32_t shiftY);           /* 291 */
TR_API CShaderMixer* CreateDepthBevel(int32_t dst, int32_t layer, double gain, double balance,
                                      uint8_t fold,
                                      float red1, float green1, float blue1, float alpha1,
                                      float red2, float green2, float blue2,
                                      float alpha2);                                   /* 292 */
TR_API CShaderMixer* CreateDepthLightBevel(int32_t dst, int32_t layer, double gain,
                                           double balance, double layerMix, uint8_t fold,
                                           float red1, float green1, float blue1,
                                           float alpha1, float red2, float green2,
                                           float blue2, float alpha2);                 /* 293 */
TR_API CShaderMixer* CreateScaleAlpha(int32_t reg, double factor);                     /* 300 */

/* ------------------------------------------------------------------------ */
/* Ordinal table                                                            */
/* ------------------------------------------------------------------------ */

/* The entry point exported under an ordinal number, or null for a number
 * that has none. ELF has no ordinals; hosts that look entry points up by
 * number use this (titlerender.def lists the same table for Windows). */
TR_API const void* titlerender_entry_point(uint32_t ordinal);

#ifdef __cplusplus
} /* extern "C" */
#endif

/* ------------------------------------------------------------------------ */
/* 32-bit layout checks: a 32-bit host reads these records byte for byte.   */
/* ------------------------------------------------------------------------ */
#if UINTPTR_MAX == 0xFFFFFFFFu
#ifdef __cplusplus
#define TR_LAYOUT_ASSERT(c, m) static_assert(c, m)
#else
#define TR_LAYOUT_ASSERT(c, m) _Static_assert(c, m)
#endif
TR_LAYOUT_ASSERT(sizeof(ImageBlock) == 16, "image block is 16 bytes");
TR_LAYOUT_ASSERT(sizeof(SurfaceDescriptor) == 24, "surface descriptor is 24 bytes");
TR_LAYOUT_ASSERT(offsetof(SurfaceDescriptor, pixelRatio) == 16, "pixel ratio follows the image block");
TR_LAYOUT_ASSERT(sizeof(FaceParameters) == 80, "face parameters are ten doubles");
TR_LAYOUT_ASSERT(offsetof(FaceParameters, x) == 48, "face X at 48");
TR_LAYOUT_ASSERT(offsetof(FaceParameters, taperV) == 72, "vertical taper is the last double");
TR_LAYOUT_ASSERT(sizeof(ScriptCallbacks) == 12, "script callbacks are three words");
TR_LAYOUT_ASSERT(offsetof(ScriptCallbacks, referenceSize) == 8, "reference size is the third word");
TR_LAYOUT_ASSERT(sizeof(TextureStyle) == 32, "style block is 32 bytes");
TR_LAYOUT_ASSERT(offsetof(TextureStyle, mix) == 8, "mix at 8");
TR_LAYOUT_ASSERT(offsetof(TextureStyle, gradientAlphaExponent) == 24, "ramp exponent at 24");
TR_LAYOUT_ASSERT(sizeof(RampRecord) == 64, "ramp record is 64 bytes");
TR_LAYOUT_ASSERT(offsetof(RampRecord, angle) == 8, "ramp angle at 8");
TR_LAYOUT_ASSERT(offsetof(RampRecord, corners) == 16, "corner colours at 16");
TR_LAYOUT_ASSERT(offsetof(RampRecord, shineWidth) == 32, "shine width at 32");
TR_LAYOUT_ASSERT(offsetof(RampRecord, shineColour) == 40, "shine colour at 40");
TR_LAYOUT_ASSERT(offsetof(RampRecord, shineAngle) == 48, "shine angle at 48");
TR_LAYOUT_ASSERT(offsetof(RampRecord, shinePosition) == 56, "shine position at 56");
TR_LAYOUT_ASSERT(sizeof(BevelRecord) == 96, "bevel record is 96 bytes");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, joinsNeighbours) == 4, "joins flag at 4");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, fold) == 6, "fold flag at 6");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, gain) == 8, "gain at 8");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, layerMix) == 16, "layer mix at 16");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, lightColour) == 24, "light colour is word 6");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, darkColour) == 28, "dark colour is word 7");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, balance) == 32, "balance at 32");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, lightAngle) == 40, "light angle at 40");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, size) == 48, "size at 48");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, profile) == 56, "profile table at 56");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, shineWidth) == 64, "bevel shine width at 64");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, shineColour) == 72, "bevel shine colour at 72");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, shineAngle) == 80, "bevel shine angle at 80");
TR_LAYOUT_ASSERT(offsetof(BevelRecord, shinePosition) == 88, "bevel shine position at 88");
TR_LAYOUT_ASSERT(sizeof(ClassicRecord) == 80, "classic record is 80 bytes");
TR_LAYOUT_ASSERT(offsetof(ClassicRecord, colour2) == 8, "colour 2 at 8");
TR_LAYOUT_ASSERT(offsetof(ClassicRecord, start) == 16, "start at 16");
TR_LAYOUT_ASSERT(offsetof(ClassicRecord, end) == 24, "end at 24");
TR_LAYOUT_ASSERT(offsetof(ClassicRecord, angle) == 32, "angle at 32");
TR_LAYOUT_ASSERT(offsetof(ClassicRecord, repeats) == 40, "repeats at 40");
TR_LAYOUT_ASSERT(offsetof(ClassicRecord, shineWidth) == 48, "classic shine width at 48");
TR_LAYOUT_ASSERT(offsetof(ClassicRecord, shineColour) == 56, "classic shine colour at 56");
TR_LAYOUT_ASSERT(offsetof(ClassicRecord, shineAngle) == 64, "classic shine angle at 64");
TR_LAYOUT_ASSERT(offsetof(ClassicRecord, shinePosition) == 72, "classic shine position at 72");
TR_LAYOUT_ASSERT(sizeof(TextureRecord) == 16, "texture record is 16 bytes");
TR_LAYOUT_ASSERT(offsetof(TextureRecord, userValue) == 4, "user value at 4");
TR_LAYOUT_ASSERT(offsetof(TextureRecord, alphaSource) == 8, "alpha source at 8");
TR_LAYOUT_ASSERT(offsetof(TextureRecord, tint) == 12, "tint at 12");
TR_LAYOUT_ASSERT(offsetof(TextureRecord, invert) == 13, "invert at 13");
TR_LAYOUT_ASSERT(sizeof(LayerDescriptor) == 32, "layer descriptor is four 64-bit values");
TR_LAYOUT_ASSERT(offsetof(LayerDescriptor, a) == 8, "a at 8");
TR_LAYOUT_ASSERT(offsetof(LayerDescriptor, b) == 16, "b at 16");
TR_LAYOUT_ASSERT(offsetof(LayerDescriptor, n) == 24, "n at 24");
#undef TR_LAYOUT_ASSERT
#endif /* 32-bit layout checks */

#endif /* TITLERENDER_H */
