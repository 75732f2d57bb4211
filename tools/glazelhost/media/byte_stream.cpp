#include "tools/glazelhost/media/byte_stream.h"

namespace GlazelHost
{

std::size_t ReadFully(ByteReader& reader, std::byte* target, std::size_t size)
{
    std::size_t done = 0;
    while (done < size)
    {
        const std::size_t count = reader.Read(target + done, size - done);
        if (count == 0)
        {
            break;
        }
        done += count;
    }
    return done;
}

} // namespace GlazelHost
