// DirectX Transform: identifiers, structures, constants and interfaces, which the toolchain has
// not. Stands in for the platform's dxtrans.h; the surface factory and surfaces are declared whole,
// the DirectDraw parameters stay opaque, the transform factory and the task manager are left out.
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <objbase.h>
#include <ocidl.h>
#include <servprov.h>

#include <cstddef>
#include <type_traits>

// The platform's header declares LoadImage as a method; windows.h makes a macro of that word.
#undef LoadImage

struct _DDSURFACEDESC;
using DDSURFACEDESC = _DDSURFACEDESC;

// clang-format off
inline constexpr IID IID_IDXBaseObject{0x17B59B2B, 0x9CC8, 0x11D1, {0x90, 0x53, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D}};
inline constexpr IID IID_IDXTransform{0x30A5FB78, 0xE11F, 0x11D1, {0x90, 0x64, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D}};
inline constexpr IID IID_IDXSurfacePick{0x30A5FB79, 0xE11F, 0x11D1, {0x90, 0x64, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D}};
inline constexpr IID IID_IDXSurface{0xB39FD73F, 0xE139, 0x11D1, {0x90, 0x65, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D}};
inline constexpr IID IID_IDXSurfaceFactory{0x144946F5, 0xC4D4, 0x11D1, {0x81, 0xD1, 0x00, 0x00, 0xF8, 0x75, 0x57, 0xDB}};
inline constexpr IID IID_IDXARGBReadPtr{0xEAAAC2D6, 0xC290, 0x11D1, {0x90, 0x5D, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D}};
inline constexpr IID IID_IDXARGBReadWritePtr{0xEAAAC2D7, 0xC290, 0x11D1, {0x90, 0x5D, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D}};
inline constexpr IID IID_IDXEffect{0xE31FB81B, 0x1335, 0x11D1, {0x81, 0x89, 0x00, 0x00, 0xF8, 0x75, 0x57, 0xDB}};

inline constexpr GUID SID_SDXSurfaceFactory = IID_IDXSurfaceFactory;

inline constexpr HRESULT DXTERR_UNINITIALIZED = static_cast<HRESULT>(0x887A0001U);
inline constexpr HRESULT DXTERR_ALREADY_INITIALIZED = static_cast<HRESULT>(0x887A0002U);
inline constexpr HRESULT DXTERR_UNSUPPORTED_FORMAT = static_cast<HRESULT>(0x887A0003U);
inline constexpr HRESULT DXTERR_COPYRIGHT_IS_INVALID = static_cast<HRESULT>(0x887A0004U);
inline constexpr HRESULT DXTERR_INVALID_BOUNDS = static_cast<HRESULT>(0x887A0005U);
inline constexpr HRESULT DXTERR_INVALID_FLAGS = static_cast<HRESULT>(0x887A0006U);
inline constexpr HRESULT DXTERR_OUTOFSTACK = static_cast<HRESULT>(0x887A0007U);
inline constexpr HRESULT DXT_S_HITOUTPUT = 0x087A0001; // a pick hit the output itself, no input
// clang-format on

enum DXBNDID : unsigned
{
    DXB_X = 0,
    DXB_Y = 1,
    DXB_Z = 2,
    DXB_T = 3
};

enum DXBNDTYPE : unsigned
{
    DXBT_DISCRETE = 0,
    DXBT_DISCRETE64 = 1,
    DXBT_CONTINUOUS = 2,
    DXBT_CONTINUOUS64 = 3
};

struct DXDBND
{
    LONG Min;
    LONG Max;
};
struct DXCBND
{
    float Min;
    float Max;
};
struct DXDBND64
{
    LONGLONG Min;
    LONGLONG Max;
};
struct DXCBND64
{
    double Min;
    double Max;
};

struct DXBNDS
{
    DXBNDTYPE eType;
    union
    {
        DXDBND D[4];
        DXDBND64 LD[4];
        DXCBND C[4];
        DXCBND64 LC[4];
    } u;
};

struct DXVEC
{
    DXBNDTYPE eType;
    union
    {
        LONG D[4];
        LONGLONG LD[4];
        float C[4];
        double LC[4];
    } u;
};

struct DXBASESAMPLE
{
    BYTE Blue;
    BYTE Green;
    BYTE Red;
    BYTE Alpha;

    DXBASESAMPLE() = default; // leaves the channels as they are
    constexpr DXBASESAMPLE(BYTE alpha, BYTE red, BYTE green, BYTE blue) noexcept
        : Blue(blue), Green(green), Red(red), Alpha(alpha)
    {
    }
    constexpr explicit DXBASESAMPLE(DWORD argb) noexcept
        : Blue(static_cast<BYTE>(argb)), Green(static_cast<BYTE>(argb >> 8)),
          Red(static_cast<BYTE>(argb >> 16)), Alpha(static_cast<BYTE>(argb >> 24))
    {
    }
    constexpr operator DWORD() const noexcept
    {
        return static_cast<DWORD>(Blue) | static_cast<DWORD>(Green) << 8 |
               static_cast<DWORD>(Red) << 16 | static_cast<DWORD>(Alpha) << 24;
    }
};

// Straight alpha.
struct DXSAMPLE : DXBASESAMPLE
{
    using DXBASESAMPLE::DXBASESAMPLE;
    DXSAMPLE() = default;
};

// Premultiplied by its alpha.
struct DXPMSAMPLE : DXBASESAMPLE
{
    using DXBASESAMPLE::DXBASESAMPLE;
    DXPMSAMPLE() = default;
};

struct DXNATIVETYPEINFO
{
    BYTE* pCurrentData; // address of the current position
    BYTE* pFirstByte;   // address of the surface's top-left sample
    LONG lPitch;        // bytes from a row to the one below; negative when stored bottom-up
    DWORD dwColorKey;
};

struct DXPACKEDRECTDESC
{
    DXBASESAMPLE* pSamples;
    BOOL bPremult;
    RECT rect;
    LONG lRowPadding; // samples to skip in pSamples after each row
};

struct DXOVERSAMPLEDESC
{
    POINT p;
    DXPMSAMPLE Color;
};

struct DXRUNINFO
{
    ULONG Type : 2;
    ULONG Count : 30;
};

static_assert(sizeof(DXDBND) == 8 && sizeof(DXCBND) == 8);
static_assert(sizeof(DXDBND64) == 16 && sizeof(DXCBND64) == 16);
static_assert(sizeof(DXBNDS) == 72 && offsetof(DXBNDS, u) == 8);
static_assert(sizeof(DXVEC) == 40 && offsetof(DXVEC, u) == 8);
static_assert(sizeof(DXBASESAMPLE) == 4 && sizeof(DXSAMPLE) == 4 && sizeof(DXPMSAMPLE) == 4);
static_assert(sizeof(DXNATIVETYPEINFO) == 24 && offsetof(DXNATIVETYPEINFO, lPitch) == 16);
static_assert(sizeof(DXPACKEDRECTDESC) == 32 && offsetof(DXPACKEDRECTDESC, lRowPadding) == 28);
static_assert(sizeof(DXOVERSAMPLEDESC) == 12 && sizeof(DXRUNINFO) == 4);
// Three surface methods take samples by value: only a trivially copyable class travels in a
// register.
static_assert(std::is_trivially_copyable_v<DXSAMPLE> && std::is_trivially_copyable_v<DXPMSAMPLE>);

enum DXINOUTINFOFLAGS : unsigned
{
    DXINOUTF_OPTIONAL = 1
};

enum DXLOCKSURF : unsigned
{
    DXLOCKF_READ = 0,
    DXLOCKF_READWRITE = 1,
    DXLOCKF_EXISTINGINFOONLY = 2,
    DXLOCKF_WANTRUNINFO = 4,
    DXLOCKF_NONPREMULT = 0x00010000,
    DXLOCKF_VALIDFLAGS = 0x00010007
};

enum DXSURFSTATUS : unsigned
{
    DXSURF_TRANSIENT = 1,
    DXSURF_READONLY = 2,
    DXSURF_VALIDFLAGS = 3
};

enum DXRUNTYPE : unsigned
{
    DXRUNTYPE_CLEAR = 0,
    DXRUNTYPE_OPAQUE = 1,
    DXRUNTYPE_TRANS = 2,
    DXRUNTYPE_UNKNOWN = 3
};

enum DXTMISCFLAGS : unsigned
{
    DXTMF_BLEND_WITH_OUTPUT = 0x00000001,
    DXTMF_DITHER_OUTPUT = 0x00000002,
    DXTMF_OPTION_MASK = 0x0000FFFF,
    DXTMF_VALID_OPTIONS = 0x00000003,
    DXTMF_BLEND_SUPPORTED = 0x00010000,
    DXTMF_DITHER_SUPPORTED = 0x00020000,
    DXTMF_INPLACE_OPERATION = 0x01000000,
    DXTMF_BOUNDS_SUPPORTED = 0x02000000,
    DXTMF_PLACEMENT_SUPPORTED = 0x04000000,
    DXTMF_QUALITY_SUPPORTED = 0x08000000,
    DXTMF_OPAQUE_RESULT = 0x10000000,
    DXTMF_DPI_AWARE = 0x20000000
};

enum DXSAMPLEFORMATENUM : unsigned
{
    DXPF_NONSTANDARD = 0,
    DXPF_RGB32 = 5,
    DXPF_RGB24 = 6,
    DXPF_NONPREMULT = 0x00010000,
    DXPF_TRANSPARENCY = 0x00020000,
    DXPF_RGB32_CK = 0x00020005,
    DXPF_RGB24_CK = 0x00020006,
    DXPF_TRANSLUCENCY = 0x00040000,
    DXPF_PMARGB32 = 0x00060001,
    DXPF_A8 = 0x00060004,
    DXPF_ARGB32 = 0x00070002,
    DXPF_2BITERROR = 0x00200000,
    DXPF_3BITERROR = 0x00300000,
    DXPF_RGB565 = 0x00300007,
    DXPF_RGB555 = 0x00300008,
    DXPF_ARGB1555 = 0x0032000A,
    DXPF_RGB565_CK = 0x00320007,
    DXPF_RGB555_CK = 0x00320008,
    DXPF_4BITERROR = 0x00400000,
    DXPF_ARGB4444 = 0x00470003,
    DXPF_5BITERROR = 0x00500000,
    DXPF_RGB8 = 0x00500009,
    DXPF_RGB8_CK = 0x00520009,
    DXPF_ERRORMASK = 0x00700000,
    DXPF_FLAGSMASK = 0xFFFF0000
};

struct IDXBaseObject : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetGenerationId(ULONG* pID) = 0;
    virtual HRESULT STDMETHODCALLTYPE IncrementGenerationId(BOOL bRefresh) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetObjectSize(ULONG* pcbSize) = 0;
};

struct IDXTransform : IDXBaseObject
{
    virtual HRESULT STDMETHODCALLTYPE Setup(IUnknown* const* punkInputs, ULONG ulNumInputs,
                                            IUnknown* const* punkOutputs, ULONG ulNumOutputs,
                                            DWORD dwFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Execute(const GUID* pRequestID, const DXBNDS* pClipBnds,
                                              const DXVEC* pPlacement) = 0;
    virtual HRESULT STDMETHODCALLTYPE MapBoundsIn2Out(const DXBNDS* pInBounds, ULONG ulNumInBnds,
                                                      ULONG ulOutIndex, DXBNDS* pOutBounds) = 0;
    virtual HRESULT STDMETHODCALLTYPE MapBoundsOut2In(ULONG ulOutIndex, const DXBNDS* pOutBounds,
                                                      ULONG ulInIndex, DXBNDS* pInBounds) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMiscFlags(DWORD dwMiscFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMiscFlags(DWORD* pdwMiscFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInOutInfo(BOOL bIsOutput, ULONG ulIndex, DWORD* pdwFlags,
                                                   GUID* pIDs, ULONG* pcIDs,
                                                   IUnknown** ppUnkCurrentObject) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetQuality(float fQuality) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetQuality(float* fQuality) = 0;
};

struct IDXSurfacePick : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE PointPick(const DXVEC* pPoint, ULONG* pulInputSurfaceIndex,
                                                DXVEC* pInputPoint) = 0;
};

struct IDXDCLock : IUnknown
{
    virtual HDC STDMETHODCALLTYPE GetDC() = 0;
};

struct IDXSurface : IDXBaseObject
{
    virtual HRESULT STDMETHODCALLTYPE GetPixelFormat(GUID* pFormatID,
                                                     DXSAMPLEFORMATENUM* pSampleFormatEnum) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBounds(DXBNDS* pBounds) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStatusFlags(DWORD* pdwStatusFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetStatusFlags(DWORD dwStatusFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockSurface(const DXBNDS* pBounds, ULONG ulTimeOut,
                                                  DWORD dwFlags, REFIID riid, void** ppPointer,
                                                  ULONG* pulGenerationId) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDirectDrawSurface(REFIID riid, void** ppSurface) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetColorKey(DXSAMPLE* pColorKey) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetColorKey(DXSAMPLE ColorKey) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockSurfaceDC(const DXBNDS* pBounds, ULONG ulTimeOut,
                                                    DWORD dwFlags, IDXDCLock** ppDCLock) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetAppData(DWORD_PTR dwAppData) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAppData(DWORD_PTR* pdwAppData) = 0;
};

struct IDXSurfaceFactory : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE CreateSurface(IUnknown* pDirectDraw,
                                                    const DDSURFACEDESC* pDesc,
                                                    const GUID* pFormatID, const DXBNDS* pBounds,
                                                    DWORD dwFlags, IUnknown* punkOuter, REFIID riid,
                                                    void** ppDXSurface) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateFromDDSurface(IUnknown* pDDrawSurface,
                                                          const GUID* pFormatID, DWORD dwFlags,
                                                          IUnknown* punkOuter, REFIID riid,
                                                          void** ppDXSurface) = 0;
    virtual HRESULT STDMETHODCALLTYPE LoadImage(const LPWSTR pszFileName, IUnknown* pDirectDraw,
                                                const DDSURFACEDESC* pDesc, const GUID* pFormatID,
                                                REFIID riid, void** ppDXSurface) = 0;
    virtual HRESULT STDMETHODCALLTYPE LoadImageFromStream(IStream* pStream, IUnknown* pDirectDraw,
                                                          const DDSURFACEDESC* pDesc,
                                                          const GUID* pFormatID, REFIID riid,
                                                          void** ppDXSurface) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopySurfaceToNewFormat(IDXSurface* pSrc,
                                                             IUnknown* pDirectDraw,
                                                             const DDSURFACEDESC* pDesc,
                                                             const GUID* pDestFormatID,
                                                             IDXSurface** ppNewSurface) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateD3DRMTexture(IDXSurface* pSrc, IUnknown* pDirectDraw,
                                                         IUnknown* pD3DRM3, REFIID riid,
                                                         void** ppTexture3) = 0;
    virtual HRESULT STDMETHODCALLTYPE BitBlt(IDXSurface* pDest, const DXVEC* pPlacement,
                                             IDXSurface* pSrc, const DXBNDS* pClipBounds,
                                             DWORD dwFlags) = 0;
};

struct IDXARGBReadPtr : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetSurface(REFIID riid, void** ppSurface) = 0;
    virtual DXSAMPLEFORMATENUM STDMETHODCALLTYPE GetNativeType(DXNATIVETYPEINFO* pInfo) = 0;
    virtual void STDMETHODCALLTYPE Move(LONG cSamples) = 0;
    virtual void STDMETHODCALLTYPE MoveToRow(ULONG y) = 0;
    virtual void STDMETHODCALLTYPE MoveToXY(ULONG x, ULONG y) = 0;
    virtual ULONG STDMETHODCALLTYPE MoveAndGetRunInfo(ULONG Row, const DXRUNINFO** ppInfo) = 0;
    virtual DXSAMPLE* STDMETHODCALLTYPE Unpack(DXSAMPLE* pSamples, ULONG cSamples, BOOL bMove) = 0;
    virtual DXPMSAMPLE* STDMETHODCALLTYPE UnpackPremult(DXPMSAMPLE* pSamples, ULONG cSamples,
                                                        BOOL bMove) = 0;
    virtual void STDMETHODCALLTYPE UnpackRect(const DXPACKEDRECTDESC* pRectDesc) = 0;
};

struct IDXARGBReadWritePtr : IDXARGBReadPtr
{
    virtual void STDMETHODCALLTYPE PackAndMove(const DXSAMPLE* pSamples, ULONG cSamples) = 0;
    virtual void STDMETHODCALLTYPE PackPremultAndMove(const DXPMSAMPLE* pSamples,
                                                      ULONG cSamples) = 0;
    virtual void STDMETHODCALLTYPE PackRect(const DXPACKEDRECTDESC* pRectDesc) = 0;
    virtual void STDMETHODCALLTYPE CopyAndMoveBoth(DXBASESAMPLE* pScratchBuffer,
                                                   IDXARGBReadPtr* pSrc, ULONG cSamples,
                                                   BOOL bIsOpaque) = 0;
    virtual void STDMETHODCALLTYPE CopyRect(DXBASESAMPLE* pScratchBuffer, const RECT* pDestRect,
                                            IDXARGBReadPtr* pSrc, const POINT* pSrcOrigin,
                                            BOOL bIsOpaque) = 0;
    virtual void STDMETHODCALLTYPE FillAndMove(DXBASESAMPLE* pScratchBuffer, DXPMSAMPLE SampVal,
                                               ULONG cSamples, BOOL bDoOver) = 0;
    virtual void STDMETHODCALLTYPE FillRect(const RECT* pRect, DXPMSAMPLE SampVal,
                                            BOOL bDoOver) = 0;
    virtual void STDMETHODCALLTYPE OverSample(const DXOVERSAMPLEDESC* pOverDesc) = 0;
    virtual void STDMETHODCALLTYPE OverArrayAndMove(DXBASESAMPLE* pScratchBuffer,
                                                    const DXPMSAMPLE* pSrc, ULONG cSamples) = 0;
};

struct IDXEffect : IDispatch
{
    virtual HRESULT STDMETHODCALLTYPE get_Capabilities(LONG* pVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Progress(float* pVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Progress(float newVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_StepResolution(float* pVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Duration(float* pVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Duration(float newVal) = 0;
};

// __uuidof for all of them.
// clang-format off
__CRT_UUID_DECL(IDXBaseObject, 0x17B59B2B, 0x9CC8, 0x11D1, 0x90, 0x53, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D)
__CRT_UUID_DECL(IDXTransform, 0x30A5FB78, 0xE11F, 0x11D1, 0x90, 0x64, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D)
__CRT_UUID_DECL(IDXSurfacePick, 0x30A5FB79, 0xE11F, 0x11D1, 0x90, 0x64, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D)
__CRT_UUID_DECL(IDXSurface, 0xB39FD73F, 0xE139, 0x11D1, 0x90, 0x65, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D)
__CRT_UUID_DECL(IDXSurfaceFactory, 0x144946F5, 0xC4D4, 0x11D1, 0x81, 0xD1, 0x00, 0x00, 0xF8, 0x75, 0x57, 0xDB)
__CRT_UUID_DECL(IDXARGBReadPtr, 0xEAAAC2D6, 0xC290, 0x11D1, 0x90, 0x5D, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D)
__CRT_UUID_DECL(IDXARGBReadWritePtr, 0xEAAAC2D7, 0xC290, 0x11D1, 0x90, 0x5D, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0x9D)
__CRT_UUID_DECL(IDXEffect, 0xE31FB81B, 0x1335, 0x11D1, 0x81, 0x89, 0x00, 0x00, 0xF8, 0x75, 0x57, 0xDB)
// clang-format on
