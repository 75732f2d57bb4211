// What "--help" says beside the options. Pure: no windows.h.
#pragma once

namespace GlazelHost
{

inline constexpr char kProgramHelp[] =
    "Renders pictures and video through the Glazel DX plug-in, as an editor would.";

inline constexpr char kProgramFooter[] = R"text(
Exit codes: 0 done, 1 the job failed, 2 wrong usage; "compare" and "validate" have 3 and 4
besides.
"glazelhost COMMAND --help" tells more about a command.)text";

inline constexpr char kRenderFooter[] = R"text(
INPUT and OUTPUT are
  a picture             photo.png, photo.jpg, photo.tif, photo.bmp
  a numbered sequence   shot_%04d.png or shot_####.png; as INPUT where no file has that very
                        name, as OUTPUT unless INPUT is a single picture
  a raw stream          clip.bgra, or - for standard input or output, with --size; its pixels
                        (FFmpeg's name in brackets): bgra8 (bgra), bgra16 (bgra64le),
                        gbraf32 (gbrapf32le), gbr8 (gbrp), gbrf32 (gbrpf32le) or
                        yuv16 (yuv444p16le in the limited range)
Video, with sound and all it has, goes through "glazel render".
Pictures are turned upright as their orientation says, and written without one. Of a file of
several pages the first counts. A picture made of a picture keeps its colour profile, its other
colour statements (PNG's, and the colour space and gamma of EXIF) and its resolution; what the
kind of OUTPUT cannot hold is named. Camera data, places and dates are not kept. CMYK, Lab and
what else cannot be read right is refused.
A look is a file that the renderer reads: FILE, FILE#ID for one correction out of a
collection, or "CDL|LUT" for both. The renderer that comes with this program reads
  LUTs                  .cube, .3dl, .csp, .clf, .spi1d, .spi3d
  ASC CDL corrections   .cc, .ccc, .cdl
  its own records       .look

--dither takes blue noise, another for every frame and colour, where frames that are rendered in
float become 8 bits (with --depth float, or of a picture with more than 8 bits): a slow gradient
then shows no bands. What is exactly an 8-bit code stays it, alpha is rounded, and the same
--seed gives the same frames again.

--frames takes the frames of a numbered sequence by the numbers of their files (1001 is
shot_1001.png), and those of a stream by their count from 1.

TIME is seconds (2.5), HH:MM:SS.mmm (00:01:02.500) or a frame (48f), counted from the
input's first frame, which is 0 here whatever its number. A time within half a
millisecond of a frame's is that frame's. The first keyframe holds before its time, the
last one after.
A project holds a look, or keyframes and their ease; it is written before the first frame.
--linear on, --linear off and --ease change what it holds for this render, and for
--save-project; --linear auto leaves what is saved alone.
"glazelhost presets" lists the presets. "(Default)" keeps the look and turns on its option
"assume linear gamma".

With --linear auto the option "assume linear gamma", which every new look has on, counts only
where the picture is linear light: a TIFF of floats, unless its colour profile says otherwise
or this program wrote it from a picture that is not, and a raw stream with --input-light linear. Whole
numbers are codes for a display in every kind of file and stream, and are graded as such, so that
8 and 16 bits of a picture come out alike. --linear on and off decide it for the whole
render. 8-bit work (--depth 8) is never linear. The line about the input says what is used.

Examples:
  glazelhost render photo.png graded.png --look warm.cube
  glazelhost render photo.tif graded.tif --look warm.cube --depth float --bits 16
  glazelhost render shot_%04d.png out_%04d.png --look day.ccc#shot12 --frames 1001-1040x2
  glazelhost render shot_####.png out_####.png --fps 24 --key 0=warm.cube --key 00:00:05=cool.cc
  ffmpeg -i in.mp4 -f rawvideo -pix_fmt bgra - | glazelhost render - out_%04d.png \
      --size 1920x1080 --opaque --look warm.cube

An output appears under its name when it is whole, and is never a file of the input. Standard
output carries pixels only; what there is to say goes to standard error.)text";

inline constexpr char kPageFooter[] = R"text(
The window shows the picture as the effect renders it, and below it the effect's own page:
"Edit..." opens the look editor, "Assume Linear Gamma" is obeyed where the effect works in
float. The line at the bottom says what it does for this picture, and whether the picture is
linear light. Every change is rendered at once.
Of a sequence, Page Up and Page Down show the picture before and the next one, Home and End the
first and the last.
"Save look..." keeps the look as a .look file. "Copy command" puts the "render" command that makes
the same picture on the clipboard, as a line for the prompt that this was started from; a look
that no file holds is saved first.
With --save-look the window closes without asking; else it asks when a changed look would be
lost.

Examples:
  glazelhost page --image photo.png --look warm.cube
  glazelhost page --image photo.tif --save-look mine.look
  glazelhost page --image shot_%04d.png --frame 1017)text";

inline constexpr char kLookFooter[] = R"text(
OUT's ending says what is written; others are refused:
  .look   the renderer's own record, the whole look
  .cube   a table for other programs. A look that is nothing but LUTs is written as it is:
          a 1D LUT, a 3D LUT, or a 1D LUT before a 3D LUT, which fewer programs read. Any
          other look, and every look with --points, is sampled as one 3D LUT, of 33 points
          a side or as many more, up to 65, as keep it within 1/4096. It is sampled over 0
          to 1, or the domain of the look's first LUT where there is no CDL before it. What
          a CDL does to each channel is written as a 1D LUT, with a 3D LUT behind it where
          the look does more, when no 3D LUT alone can follow it; --points 65 writes one all
          the same.
  .cc     an ASC CDL, of a look that is nothing else
What a file cannot keep of the look is said. The option "assume linear gamma" belongs to
records alone: .cube and .cc hold the look for display values, as 8-bit pictures get it.

Examples:
  glazelhost look warm.cube warm.look
  glazelhost look graded.look graded.cube --points 33
  glazelhost look day.ccc#shot12 shot12.look --linear off)text";

inline constexpr char kBlendFooter[] = R"text(
FRACTION is 0 for all of A to 1 for all of B. The record's option "assume linear gamma" is
on, unless FRACTION is 0 or 1. It is written as a .look file.

Examples:
  glazelhost blend warm.cube cool.cc 0.5 between.look)text";

inline constexpr char kCompareFooter[] = R"text(
A and B are pictures, numbered sequences or raw streams (bgra8, with --size), of one size and as
many frames; the numbers of sequences may differ. A difference D is of channels from 0 to 1, whatever the depth:
1/255 is one 8-bit code. Alpha is compared where A or B has it. Told are the largest difference,
with its frame, pixel (from the upper left, from 0) and channel; the mean; the PSNR; and the
share of pixels that differ by more than --threshold.
Exit codes: 0 within both limits, 3 over --warn-over, 4 over --fail-over; a limit that is not
given is none.

Examples:
  glazelhost compare graded.png expected.png --fail-over 1/255
  glazelhost compare a_%04d.tif b_%04d.tif --json
  glazelhost compare clip.bgra other.bgra --size 1920x1080 --picture diff_%04d.png)text";

inline constexpr char kExplainFooter[] = R"text(
PIXEL is X,Y, a pixel of INPUT; --colour is for a colour without a picture, each channel from 0 to 1,
or as 128/255. The picture is rendered through the plug-in as "render" would; each step of the
look is told with its numbers and what it leaves: slope, offset, clamp, power and saturation of
a CDL, the entries of a 1D LUT, the cell, nodes and weights of a 3D LUT, the strength. The last
line is what the plug-in made of the pixel; it is an error when that is not what the steps give.
Of a look of another renderer only input and result are known.

Examples:
  glazelhost explain 120,45 photo.png --look warm.cube
  glazelhost explain --colour 0.5,0.25,0.1 --look day.ccc#shot12 --json
  glazelhost explain --colour 128/255,64/255,0 --look warm.cube --depth 8)text";

inline constexpr char kPresetsFooter[] = R"text(
Examples:
  glazelhost presets
  glazelhost presets --json)text";

inline constexpr char kValidateFooter[] = R"text(
FILE is a plug-in's or a renderer's DLL; which of both is seen from its exports. Each group of
checks runs in a process of its own, so that a crash or a hang is a result: passed, warning,
failed, skipped, crashed or timed out. A group has a level: up to 5 a host can live with what
is judged, 10 is all that can be asked. PATTERN is a group's name, in which * stands for any
characters; --only and --skip may be given several times. The same --seed gives the same report, times
apart. A plug-in is judged together with a renderer. docs/validate.md tells what is asked.
The last line of standard output is the verdict. Exit codes: 0 all held, 1 it could not be
judged, 2 wrong usage, 3 all held, with warnings or (--again) differences, 4 something did not hold.

Examples:
  glazelhost validate --list
  glazelhost validate GZ3Renderer_x64.dll
  glazelhost validate GlazelDX_x64.dll --level 10 --json report.json
  glazelhost validate --again report.json)text";

inline constexpr char kInfoFooter[] = R"text(
Examples:
  glazelhost info
  glazelhost info --json --renderer D:\renderer)text";

} // namespace GlazelHost
