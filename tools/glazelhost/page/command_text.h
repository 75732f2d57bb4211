// The "glazelhost render" command that repeats a picture, as a line for a prompt.
// Pure: no windows.h. Tests: tests/tools/glazelhost/page/command_text_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"
#include "tools/glazelhost/plugin/tool_paths.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace GlazelHost
{

// A file that a look is read from, and how.
struct LookFile
{
    std::string path; // or FILE#ID, or CDL|LUT
    std::optional<bool> linear;
    bool unclamped = false;

    friend bool operator==(const LookFile&, const LookFile&) = default;
};

// All paths are UTF-8.
struct RepeatedRender
{
    std::string image;
    std::string output;
    std::optional<std::int64_t> frame; // of several: its number for --frames
    LookFile look;
    std::optional<SampleType> depth;
    ToolPaths tools;
};

// Where a line is typed, and what the program is called there.
struct Prompt
{
    bool isUnixShell = false; // else the one of Windows
    std::string program = "glazelhost";
};

// Every word that the prompt or the program would take apart is quoted. A percent sign is left as
// it is: the prompt of Windows has no way to quote it, and a shell no need.
std::string CommandText(const RepeatedRender& render, const Prompt& prompt = {});

// Beside the image: "C:\a\photo.png" gives "C:\a\photo_graded.png", or, where that `exists`,
// "photo_graded_2.png" and so on. An extension that a render cannot write becomes ".png".
std::string GradedNameOf(const std::string& image,
                         const std::function<bool(const std::string&)>& exists);

} // namespace GlazelHost
