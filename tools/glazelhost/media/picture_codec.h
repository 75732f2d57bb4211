// Picture files through the Windows Imaging Component. COM is initialised on the calling thread.
//
// Only integer pixels of at most 8 bits are ever converted by the component's own converter: it
// takes floats for linear light and would change their values.
#pragma once

#include "platform/atl/atlcomcli.h"
#include "tools/glazelhost/media/byte_stream.h"
#include "tools/glazelhost/media/file_kind.h"
#include "tools/glazelhost/media/frame_io.h"
#include "tools/glazelhost/media/orientation.h"
#include "tools/glazelhost/media/pixel_convert.h"

#include <windows.h>

#include <wincodec.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace GlazelHost
{

// One picture of a file that is held in memory.
class PictureDecoder
{
public:
    // Reads as much as tells the size and the pixels' layout. `file` is the whole file, `name`
    // stands for it in messages. Throws HostError for what is damaged, of no known kind, of a
    // layout that is not supported, or of a size that CheckSize refuses.
    PictureDecoder(std::vector<std::byte> file, std::string name);

    // Upright, whichever way it is stored.
    int Width() const noexcept { return SwapsSides(m_orientation) ? m_height : m_width; }
    int Height() const noexcept { return SwapsSides(m_orientation) ? m_width : m_height; }
    // 32 stands for floats of 16 bits too: no whole numbers hold their values.
    int BitsPerChannel() const noexcept
    {
        return m_layout.sample == FileSample::Float16 ? 32 : m_layout.BitsPerChannel();
    }
    // For the user: "16-bit float, page 1 of 3 (the others are left out)".
    std::string Description() const;
    const Light& LightOfPixels() const noexcept { return m_light; }

    // With what the file says beside the pixels. Throws HostError when the pixels are damaged or
    // some are missing.
    void Decode(Image& image, SampleType type);

private:
    void FindLayout();
    void FindWords(const std::vector<std::byte>& file);
    void ConvertToBytes(const WICPixelFormatGUID& format);
    void Check(HRESULT result, const char* what) const;

    std::string m_name;
    Light m_light;
    std::shared_ptr<const PictureFacts> m_facts; // null: none
    CComPtr<IWICImagingFactory> m_factory;
    CComPtr<IWICBitmapFrameDecode> m_frame;
    CComPtr<IWICBitmapSource> m_source; // the frame, or a converter on it
    int m_width = 0;                    // as it is stored
    int m_height = 0;
    int m_orientation = 1;
    UINT m_pages = 1;
    PixelLayout m_layout;
    bool m_hasAlpha = false;
    bool m_swapsWords = false; // the codec gives 16-bit channels in the wrong byte order
};

struct PictureFormat
{
    FileKind kind = FileKind::Png; // a picture
    int bits = 8;                  // per channel: 8; PNG and TIFF 16; TIFF 32 (float)
    int quality = 95;              // JPEG, 1 to 100; from 90 on chroma keeps its full resolution
    bool isLinear = true;          // of floats: false is noted in the file
};

// Writes a whole file to `target`, which is not committed. Alpha is written where the image has it
// and the kind can hold it (not JPEG); of the image's facts, those that it can hold. Throws
// HostError.
void EncodePicture(const Image& image, const PictureFormat& format, ByteWriter& target,
                   const std::string& name);

} // namespace GlazelHost
