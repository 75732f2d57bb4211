// A test program: copies frames from a source to a sink, so that scripts can compare with other
// programs what the library reads and writes.
//   frame_copy INPUT OUTPUT [in=FORMAT] [out=FORMAT] [depth=8|float] [size=WxH] [bits=N]
//              [overwrite=1]
// Prints what the source says about itself, and the error when there is one, on standard error.

#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/open_frames.h"

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace GlazelHost
{

namespace
{

struct Words
{
    std::vector<std::string> paths;
    std::map<std::string, std::string> options;

    std::string Option(const std::string& name) const
    {
        const auto found = options.find(name);
        return found == options.end() ? std::string() : found->second;
    }
};

Words ParseWords(int count, wchar_t** arguments)
{
    Words words;
    for (int i = 1; i < count; ++i)
    {
        const std::string word = Utf8(arguments[i]);
        const auto equals = word.find('=');
        if (i <= 2 || equals == std::string::npos)
        {
            words.paths.push_back(word);
        }
        else
        {
            words.options[word.substr(0, equals)] = word.substr(equals + 1);
        }
    }
    return words;
}

void Copy(const Words& words)
{
    SourceOptions from;
    from.path = words.paths.at(0);
    from.format = StreamFormatFromName(words.Option("in"));
    std::sscanf(words.Option("size").c_str(), "%dx%d", &from.width, &from.height);
    SinkOptions to;
    to.path = words.paths.at(1);
    to.format = StreamFormatFromName(words.Option("out"));
    to.overwrite = !words.Option("overwrite").empty();
    if (const std::string bits = words.Option("bits"); !bits.empty())
    {
        to.bits = std::atoi(bits.c_str());
    }
    const SampleType type = words.Option("depth") == "float" ? SampleType::Float : SampleType::Byte;

    const auto source = OpenSource(from);
    std::fprintf(stderr, "%s\n", source->Info().description.c_str());
    const auto sink = OpenSink(to, source->Info());
    Image image;
    while (source->Read(image, type))
    {
        sink->Write(image);
    }
    sink->Finish();
}

} // namespace

int RunProgram()
{
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (arguments == nullptr || count < 3 ||
        FAILED(::CoInitializeEx(nullptr, COINIT_MULTITHREADED)))
    {
        return static_cast<int>(ExitCode::WrongUsage);
    }
    ExitCode code = ExitCode::Done;
    try
    {
        Copy(ParseWords(count, arguments));
    }
    catch (const HostError& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        code = error.Code();
    }
    ::LocalFree(arguments);
    ::CoUninitialize();
    return static_cast<int>(code);
}

} // namespace GlazelHost

int main()
{
    return GlazelHost::RunProgram();
}
