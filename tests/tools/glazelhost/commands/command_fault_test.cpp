// Every command that reads or writes, over the product and the reference renderer, with each call
// failing in turn by which files, pipes and folders are opened, read, written and named. Whatever
// failed: the line that stands in the table and no success, or the very same result; what stood
// under a name stands there or its whole successor; nothing else is left, and nothing hangs.
#include "tools/glazelhost/commands/commands.h"

#include "contract/entry_points.h"
#include "support/win32/com_scope.h"
#include "support/win32/file_handle.h"
#include "support/win32/slim_lock.h"
#include "support/win32/utf8.h"
#include "tests/doubles/deadline.h"
#include "tests/doubles/test_thread.h"
#include "tests/tools/glazelhost/commands/io_faults.h"
#include "tests/tools/glazelhost/media/sample_images.h"
#include "tests/tools/glazelhost/media/scratch_folder.h"
#include "tools/glazelhost/media/open_frames.h"
#include "tools/glazelhost/plugin/library_file.h"
#include "tools/glazelhost/plugin/plugin_module.h"
#include "tools/glazelhost/ui/reporter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

using namespace GlazelHost;

namespace
{

constexpr int kWidth = 4;
constexpr int kHeight = 3;

// The folder of every job: its inputs, and something under the name of each output.
class Inputs
{
public:
    Inputs()
    {
        const Image picture = RandomImage(kWidth, kHeight, SampleType::Float, false, 1);
        const Image other = RandomImage(kWidth, kHeight, SampleType::Float, false, 2);
        const Image clear = RandomImage(kWidth, kHeight, SampleType::Float, true, 3);
        for (const char* const name : {"in.png", "in.tif", "in.jpg", "in_01.png"})
        {
            Write(name, {picture});
        }
        Write("clear.bmp", {clear});
        Write("in_02.png", {other});
        Write("in_03.png", {clear});
        Write("other.png", {other});
        Write("in.bgra", {picture, other, clear});
        m_folder.Put("look.cube", "TITLE \"a look\"\nLUT_3D_SIZE 2\n0 0 0\n1 0 0\n0 .5 0\n1 1 0\n"
                                  "0 0 .25\n1 0 1\n0 1 1\n1 1 1\n");
        m_folder.Put("look.cc",
                     "<ColorCorrection id=\"a\"><SOPNode><Slope>.5 1 1</Slope><Offset>0 0 0"
                     "</Offset><Power>1 1 1</Power></SOPNode></ColorCorrection>");
    }
    const ScratchFolder& Folder() const { return m_folder; }

private:
    void Write(const char* name, const std::vector<Image>& images) const
    {
        SinkOptions options;
        options.path = m_folder / name;
        options.overwrite = true;
        StreamInfo info;
        info.isPicture = images.size() == 1;
        info.bitsPerChannel = 16;
        const auto sink = OpenSink(options, info);
        for (const Image& image : images)
        {
            sink->Write(image);
        }
        sink->Finish();
    }

    ScratchFolder m_folder;
};

struct Job
{
    const char* name;
    const char* words;   // @ is the folder of the inputs
    const char* outputs; // names; kOld stands there before
    const char* input;   // of a pipe; empty: standard input is none
    std::string answers; // a line for each point with what is said when its calls fail
    bool varies = false; // what is written holds the time, and is compared by its length alone
};

void PrintTo(const Job& job, std::ostream* out)
{
    *out << job.name;
}

std::vector<std::string> WordsOf(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string Replaced(std::string text, std::string_view what, std::string_view with)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
    {
        text.replace(at, what.size(), with);
    }
    return text;
}

struct Outcome
{
    ExitCode code{};
    std::string said;   // to standard error
    std::string output; // to standard output
    std::map<std::string, std::string> files;
    std::vector<IoFaults::Point> reached;
    std::vector<std::string> held;
};

std::map<std::string, std::string> FilesIn(const ScratchFolder& folder)
{
    std::map<std::string, std::string> files;
    for (const std::wstring& name : folder.Names())
    {
        files[Utf8(name)] = folder.Content(Utf8(name));
    }
    return files;
}

// A pipe that holds all that is put into it.
struct Pipe
{
    Pipe()
    {
        HANDLE from = nullptr;
        HANDLE to = nullptr;
        if (!::CreatePipe(&from, &to, nullptr, 1 << 20))
        {
            throw std::runtime_error("there is no pipe");
        }
        end.reset(from);
        begin.reset(to);
    }
    FileHandle begin;
    FileHandle end;
};

std::string Rest(HANDLE pipe)
{
    std::string text;
    std::array<char, 4096> part{};
    DWORD count = 0;
    while (::ReadFile(pipe, part.data(), part.size(), &count, nullptr) && count != 0)
    {
        text.append(part.data(), count);
    }
    return text;
}

ExitCode RunWords(const std::string& words, const ScratchFolder& folder)
{
    Reporter reporter(ReportStyle::Plain, {[](const std::string& text) { std::cout << text; },
                                           [] { return 0.0; }, [] { return 80; }});
    return RunToEnd(ParseCommandLine(WordsOf(Replaced(words, "@", folder / ""))), reporter);
}

class CommandFaults : public testing::TestWithParam<Job>
{
protected:
    static void SetUpTestSuite()
    {
        s_com.emplace(false);
        s_inputs.emplace();
        // Of its own kinds of file the program reads what it wrote.
        for (const char* const words :
             {"render @in.bgra @kept.bgra --size 4x3 --look @look.cube --save-project @kept.glz",
              "validate GZ3Renderer_x64.dll --only renderer.exports --json @kept.json --jobs 1"})
        {
            ASSERT_EQ(RunWords(words, s_inputs->Folder()), ExitCode::Done);
        }
        // Kept, so that their calls can be made to fail.
        s_renderer = ::LoadLibraryA(RendererAPI::kLibraryName);
        s_faults.emplace(s_renderer);
    }
    static void TearDownTestSuite()
    {
        s_faults.reset();
        ::FreeLibrary(s_renderer);
        s_inputs.reset();
        s_com.reset();
    }

    // A project is replaced by another one alone.
    static std::string OldOf(const std::string& name)
    {
        return name.ends_with(".glz") ? s_inputs->Folder().Content("kept.glz")
                                      : "what stood here before";
    }

    Outcome Run(const std::string& point, std::size_t nth, IoFaults::Kind kind)
    {
        const ScratchFolder& folder = s_inputs->Folder();
        const Job& job = GetParam();
        for (const std::string& name : WordsOf(job.outputs))
        {
            folder.Put(name, OldOf(name));
        }
        Pipe input;
        Pipe output;
        const std::string given = *job.input != '\0' ? folder.Content(job.input) : "";
        DWORD count = 0;
        ::WriteFile(input.begin.get(), given.data(), static_cast<DWORD>(given.size()), &count,
                    nullptr);
        input.begin.reset();
        ::SetStdHandle(STD_INPUT_HANDLE, input.end.get());
        ::SetStdHandle(STD_OUTPUT_HANDLE, output.begin.get());

        const Command command = ParseCommandLine(WordsOf(Replaced(job.words, "@", folder / "")));
        Outcome outcome;
        SlimLock start;
        start.lock();
        TestThread thread([&] {
            start.lock(); // the making of this thread is over, and is no point
            IoFaults::Arm(point, nth, kind);
            IoFaults::Name(input.end.get(), "standard input");
            IoFaults::Name(output.begin.get(), "standard output");
            Reporter reporter(ReportStyle::Plain,
                              {[&](const std::string& text) { outcome.said += text; },
                               [] { return 0.0; }, [] { return 80; }});
            outcome.code = RunToEnd(command, reporter);
            outcome.reached = IoFaults::Disarm();
        });
        start.unlock();
        if (!thread.Join(kDeadlineMs))
        {
            ADD_FAILURE() << "it hangs: " << point << " " << nth;
            ::TerminateProcess(::GetCurrentProcess(), 1);
        }
        output.begin.reset();
        outcome.held = IoFaults::Held();
        outcome.output = Plain(Rest(output.end.get()));
        outcome.said = Plain(outcome.said);
        outcome.files = FilesIn(folder);
        Reset(outcome.files);
        return outcome;
    }

    static void ExpectFailure(const Outcome& outcome, const Outcome& whole);

    // Without the folder's path and the words of the system.
    static std::string Plain(std::string text)
    {
        text = Replaced(std::move(text), s_inputs->Folder() / "", "");
        text = Replaced(std::move(text), ProgramFolder() + "\\", "");
        for (const char* const number : {"(Windows error ", "(error "})
        {
            for (std::size_t at = 0; (at = text.find(number)) != std::string::npos;)
            {
                const std::size_t begin = text.rfind(": ", at) + 2;
                text.replace(begin, text.find(')', at) + 1 - begin, "SYSTEM");
            }
        }
        return text;
    }

private:
    // Takes away what a job has made.
    static void Reset(const std::map<std::string, std::string>& files)
    {
        const ScratchFolder& folder = s_inputs->Folder();
        for (const auto& [name, content] : files)
        {
            if (!name.starts_with("in") && !name.starts_with("look") &&
                !name.starts_with("other") && !name.starts_with("clear") &&
                !name.starts_with("kept"))
            {
                ::DeleteFileA((folder / name).c_str());
            }
        }
    }

    static inline std::optional<ComScope> s_com; // for the codecs
    static inline std::optional<Inputs> s_inputs;
    static inline std::optional<IoFaults> s_faults;
    static inline HMODULE s_renderer = nullptr;
};

// The line of a failure is "glazelhost: WHAT: " with one of these.
struct Sentence
{
    const char* word;
    const char* text;
};

// clang-format off
constexpr Sentence kSentences[] = {
    {"open", "it cannot be opened: SYSTEM; check the path and the right to read it"},
    {"read", "reading failed: SYSTEM; check the medium that holds it and try again"},
    {"write", "writing failed: SYSTEM; make room on the disk or choose another folder"},
    {"create", "it cannot be created: SYSTEM; check the right to write to its folder and the room on its disk"},
    {"name", "it cannot get its name: SYSTEM; check that nobody else has the file open or made one meanwhile"},
    {"closed", "the program that reads it closed the pipe; look at that program's own message"},
    {"list", "its folder cannot be listed: SYSTEM; check the path and the right to read it"},
    {"import", "the renderer cannot import this look (LoadSessionFile answered -2); check that the file is there and of a kind that the renderer reads"},
    {"open-look", "cannot be opened: SYSTEM; check the path and the permissions"},
    {"read-look", "cannot be read: SYSTEM; try again"},
    {"none", "there was no frame to write; check the input and the list of frames"},
    {"one-out", "1 frame could not be read and was left out; render the missing ones again from good files"},
    {"two-out", "2 frames could not be read and were left out; render the missing ones again from good files"},
    {"tell", "writing failed: SYSTEM; check where it goes to"},
    {"room", "SYSTEM; free memory and room for temporary files"},
    {"no-effect", "it makes no effect; do what is told above about it"},
    {"load", "it cannot be read: SYSTEM; check the file and its access rights"},
};
// clang-format on

std::string LastLine(const std::string& text)
{
    const std::size_t end = text.find_last_not_of('\n') + 1;
    const std::size_t begin = text.rfind('\n', end - 1) + 1;
    return text.substr(begin, end - begin);
}

// The word for the line of a failure at that point; the line where there is none.
std::string WordOf(const std::string& point, const std::string& line, const std::string& outputs)
{
    constexpr std::string_view kProgram = "glazelhost: ";
    for (const Sentence& sentence : kSentences)
    {
        const std::string end = std::string(": ") + sentence.text;
        if (line.starts_with(kProgram) && line.ends_with(end))
        {
            const std::string what =
                line.substr(kProgram.size(), line.size() - kProgram.size() - end.size());
            const std::string subject = point.substr(point.find(' ') + 1);
            const auto names = WordsOf(outputs);
            const bool isSubject =
                what == subject || (subject == "~" && std::ranges::count(names, what) != 0);
            return (isSubject ? "" : what + ":") + sentence.word;
        }
    }
    return line;
}

// A successor of what stood there.
bool IsWhole(const Job& job, const std::string& content, const std::string& whole)
{
    return job.varies ? content.size() > whole.size() / 2 &&
                            content.ends_with(whole.substr(whole.size() - 3))
                      : content == whole;
}

bool IsAs(const Job& job, const Outcome& outcome, const Outcome& whole)
{
    return outcome.code == whole.code &&
           std::ranges::equal(outcome.files, whole.files,
                              [&job](const auto& file, const auto& other) {
                                  return file.first == other.first &&
                                         IsWhole(job, file.second, other.second);
                              }) &&
           (job.varies || (outcome.said == whole.said && outcome.output == whole.output));
}

// No success, a line, and nothing half.
void CommandFaults::ExpectFailure(const Outcome& outcome, const Outcome& whole)
{
    const Job& job = GetParam();
    EXPECT_EQ(outcome.code, ExitCode::Failed) << outcome.said << outcome.output;
    const std::string line = LastLine(outcome.said);
    EXPECT_TRUE(line.starts_with("glazelhost: ") && Says(line, "; ")) << line;
    EXPECT_FALSE(Says(line, "report this to the makers")) << line;
    if (!job.varies)
    {
        EXPECT_TRUE(whole.output.starts_with(outcome.output)) << outcome.output;
    }
    const bool isKept =
        Says(outcome.said, " before the failure") || Says(outcome.said, " left out;");
    for (const auto& [name, content] : outcome.files)
    {
        const auto other = whole.files.find(name);
        if (other == whole.files.end())
        {
            ADD_FAILURE() << name << " is left";
            continue;
        }
        const bool isPart = isKept && other->second.starts_with(content) && !content.empty() &&
                            content.size() % (4 * kWidth * kHeight) == 0;
        EXPECT_TRUE(content == OldOf(name) || isPart || IsWhole(job, content, other->second))
            << name << " is half: " << content.size() << " bytes";
    }
    EXPECT_EQ(outcome.files.size(), whole.files.size()) << "an old file is gone";
}

const char* DeedOf(IoFaults::Kind kind)
{
    switch (kind)
    {
    case IoFaults::Kind::Fails:
        return " fails";
    case IoFaults::Kind::Stays:
        return " and all that follow fail";
    case IoFaults::Kind::Part:
        return " moves one byte";
    case IoFaults::Kind::Nothing:
        return " and all that follow move nothing";
    }
    return "";
}

TEST_P(CommandFaults, AtEveryPointGiveTheStatedLineOrTheSameResult)
{
    using Kind = IoFaults::Kind;
    const Job& job = GetParam();
    Run("", 0, Kind::Fails); // what is made once in a process is there
    const Outcome whole = Run("", 0, Kind::Fails);
    ASSERT_EQ(whole.code, ExitCode::Done) << whole.said << whole.output;
    std::set<std::string> answers;
    for (const auto& [point, calls] : whole.reached)
    {
        std::vector<std::string> words;
        for (std::size_t nth = 1; nth <= calls; ++nth)
        {
            for (const Kind kind : {Kind::Fails, Kind::Stays, Kind::Part, Kind::Nothing})
            {
                const bool moves = point.starts_with("ReadFile") || point.starts_with("WriteFile");
                const bool isEnd = point == "ReadFile standard input"; // where nothing is moved
                if ((kind == Kind::Stays && nth != 1) || (kind == Kind::Part && !moves) ||
                    (kind == Kind::Nothing && (!moves || isEnd)))
                {
                    continue;
                }
                SCOPED_TRACE("call " + std::to_string(nth) + " of " + point + DeedOf(kind));
                const Outcome outcome = Run(point, nth, kind);
                EXPECT_EQ(outcome.held, std::vector<std::string>());
                const bool isSame = IsAs(job, outcome, whole);
                if (!isSame)
                {
                    ExpectFailure(outcome, whole);
                }
                if (kind == Kind::Part)
                {
                    EXPECT_TRUE(isSame);
                }
                if (kind == Kind::Fails)
                {
                    const std::string word =
                        isSame ? "-" : WordOf(point, LastLine(outcome.said), job.outputs);
                    if (std::ranges::find(words, word) == words.end())
                    {
                        words.push_back(word);
                    }
                }
            }
        }
        std::string answer = point + ":";
        for (const std::string& word : words)
        {
            answer += " " + word;
        }
        answers.insert(answer);
    }
    std::istringstream lines(job.answers);
    std::set<std::string> stated;
    for (std::string line; std::getline(lines, line);)
    {
        stated.insert(line);
    }
    EXPECT_EQ(answers, stated);
}

// What jobs have in common. "-" changes nothing.
std::string Input(const std::string& name, const std::string& opening = "open -",
                  const std::string& reading = "read")
{
    return "CreateFileW " + name + ": " + opening + "\nGetFileSizeEx " + name + ": " + reading +
           "\nReadFile " + name + ": " + reading + "\n";
}

std::string Target(const std::string& name)
{
    return "CreateFileW " + name + ": -\n";
}

std::string Look(const std::string& name)
{
    return "CreateFileW " + name + ": import open-look\nGetFileSizeEx " + name +
           ": import read-look\nReadFile " + name + ": import read-look\n";
}

const std::string kPlugIn = "CreateFileW GlazelDX_x64.dll: load\n"
                            "GetFileSizeEx GlazelDX_x64.dll: load\n"
                            "ReadFile GlazelDX_x64.dll: load\n";
const std::string kListed = "FindFirstFileW *: in_%02d.png:list out_%02d.png:list\n"
                            "FindNextFileW *: in_%02d.png:list out_%02d.png:list\n";
const std::string kTargets = Target("out_01.png") + Target("out_02.png") + Target("out_03.png");
const std::string kNewFile = "CreateFileW ~: create\nSetFileInformationByHandle ~: - name\n"
                             "WriteFile ~: write\nFlushFileBuffers ~: write\nMoveFileExW ~: name\n";
const std::string kGroup = Input("GZ3Renderer_x64.dll", "load open", "load read") +
                           "CreateProcessW none: a process for a group of checks:room\n"
                           "GetTempFileNameW Temp: a temporary file:room\n"
                           "CreateFileW scratch: a temporary file:room\n"
                           "GetFileSizeEx scratch: a temporary file:room\n"
                           "SetFilePointerEx scratch: a temporary file:room\n"
                           "ReadFile scratch: a temporary file:room\n";
const std::string kThreads = "CreateThread any: -\n";
const std::string kText = "WriteFile standard output: tell\n";

// clang-format off
const Job kJobs[] = {
    {"Picture", "render @in.png @out.png --look @look.cube --overwrite", "out.png", "",
     Input("in.png") + Target("out.png") + kPlugIn + Look("look.cube") + kNewFile},
    {"FloatPicture", "render @in.tif @out.tif --look @look.cube --overwrite --bits 32", "out.tif", "",
     Input("in.tif") + Target("out.tif") + kPlugIn + Look("look.cube") + kNewFile},
    {"ClearPicture", "render @clear.bmp @out.bmp --look @look.cube --overwrite", "out.bmp", "",
     Input("clear.bmp") + Target("out.bmp") + kPlugIn + Look("look.cube") + kNewFile},
    {"Jpeg", "render @in.jpg @out.jpg --look @look.cube --overwrite", "out.jpg", "",
     Input("in.jpg") + Target("out.jpg") + kPlugIn + Look("look.cube") + kNewFile},
    {"Sequence", "render @in_%02d.png @out_%02d.png --look @look.cube --overwrite",
     "out_01.png out_02.png out_03.png", "",
     kListed +
         Input("in_01.png") + Input("in_02.png", "- open") + Input("in_03.png", "- open") +
         kTargets + kPlugIn + Look("look.cube") + kThreads + kNewFile},
    {"SequenceThatGoesOn",
     "render @in_%02d.png @out_%02d.png --look @look.cube --overwrite --skip-bad-frames",
     "out_01.png out_02.png out_03.png", "",
     kListed +
         Input("in_01.png", "in_%02d.png:one-out -", "in_%02d.png:one-out") +
         Input("in_02.png", "- in_%02d.png:one-out", "in_%02d.png:one-out") +
         Input("in_03.png", "- in_%02d.png:one-out", "in_%02d.png:one-out") +
         kTargets + kPlugIn + Look("look.cube") + kThreads + kNewFile},
    {"Stream", "render @in.bgra @out.bgra --size 4x3 --look @look.cube --overwrite", "out.bgra", "",
     Input("in.bgra") + Target("out.bgra") + kPlugIn + Look("look.cube") + kThreads + kNewFile},
    {"StreamThatGoesOn",
     "render @in.bgra @out.bgra --size 4x3 --look @look.cube --overwrite --skip-bad-frames",
     "out.bgra", "",
     "CreateFileW in.bgra: open -\nGetFileSizeEx in.bgra: read\n"
     "ReadFile in.bgra: out.bgra:none two-out one-out\n" +
         Target("out.bgra") + kPlugIn + Look("look.cube") + kThreads + kNewFile},
    {"LastFrame", "render @in.bgra @out.png --frames 3 --size 4x3 --look @look.cube --overwrite",
     "out.png", "",
     Input("in.bgra") + "SetFilePointerEx in.bgra: -\n" + Target("out.png") + kPlugIn +
         Look("look.cube") + kThreads + kNewFile},
    {"Pipes", "render - - --size 4x3 --input-format bgra8 --output-format gbrf32 --look @look.cube",
     "", "in.bgra",
     kPlugIn + Look("look.cube") + kThreads +
         "ReadFile standard input: read\nWriteFile standard output: closed\n"},
    {"PipesThatGoOn",
     "render - - --size 4x3 --input-format bgra8 --output-format bgra8 --look @look.cube "
     "--skip-bad-frames",
     "", "in.bgra",
     kPlugIn + Look("look.cube") + kThreads +
         "ReadFile standard input: standard output:none one-out\n"
         "WriteFile standard output: closed\n"},
    {"Keys",
     "render @in.bgra @out.bgra --size 4x3 --key 0f=@look.cube --key 2f=@look.cc --fps 25 "
     "--save-project @out.glz --overwrite",
     "out.bgra out.glz", "",
     Input("in.bgra") + Target("out.bgra") + Input("out.glz", "- open") + kPlugIn +
         Look("look.cube") + Look("look.cc") + kThreads + kNewFile},
    {"Project", "render @in.bgra @out.bgra --size 4x3 --project @kept.glz --overwrite", "out.bgra",
     "",
     Input("in.bgra") + Target("out.bgra") + Input("kept.glz", "open") + kPlugIn + kThreads +
         kNewFile},
    {"Look", "look @look.cube @out.look --overwrite", "out.look", "",
     Target("out.look") + Look("look.cube") + kNewFile + kText},
    {"Cube", "look @look.cube @out.cube --overwrite", "out.cube", "",
     Target("out.cube") + Look("look.cube") + kNewFile + kText},
    {"Blend", "blend @look.cube @look.cc 0.5 @out.look --overwrite", "out.look", "",
     Target("out.look") + kPlugIn + Look("look.cube") + Look("look.cc") + kNewFile},
    {"Compare", "compare @in.png @other.png --picture @out.png --overwrite", "out.png", "",
     Input("in.png") + Input("other.png") + Target("out.png") + kNewFile + kText},
    {"CompareSequences", "compare @in_%02d.png @in_%02d.png --json", "", "",
     "FindFirstFileW *: in_%02d.png:list\nFindNextFileW *: in_%02d.png:list\n" +
         Input("in_01.png", "open") + Input("in_02.png", "open") + Input("in_03.png", "open") +
         kText},
    {"Explain", "explain 1,1 @in.png --look @look.cube", "", "",
     Input("in.png", "open") + kPlugIn + Look("look.cube") + kText},
    {"Presets", "presets", "", "", kPlugIn + kText},
    {"Info", "info --json", "", "",
     Replaced(kPlugIn, "load", "the plug-in:no-effect") + kText, true},
    {"Groups", "validate --list", "", "", kText},
    {"Validate",
     "validate GZ3Renderer_x64.dll --only renderer.exports --json @out.json --junit @out.xml "
     "--overwrite --jobs 1",
     "out.json out.xml", "", kGroup + Target("out.json") + Target("out.xml") + kNewFile + kText, true},
    {"ValidateAgain", "validate --again @kept.json", "", "",
     kGroup + Input("kept.json", "open") + kText, true},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Host, CommandFaults, testing::ValuesIn(kJobs),
                         [](const auto& job) { return std::string(job.param.name); });

} // namespace

// "glazelhost validate" runs its program again for each group of checks.
int main(int count, char** words)
{
    if (count > 1 && std::string_view(words[1]) == "validate")
    {
        Reporter reporter(ReportStyle::Plain,
                          {[](const std::string&) {}, [] { return 0.0; }, [] { return 80; }});
        return static_cast<int>(RunToEnd(ParseCommandLine({words + 1, words + count}), reporter));
    }
    std::cout << "Running main() of its own" << std::endl; // wine-test.sh waits for such a line
    testing::InitGoogleTest(&count, words);
    return RUN_ALL_TESTS();
}
