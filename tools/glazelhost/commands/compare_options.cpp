#include "tools/glazelhost/commands/compare_options.h"

#include "tools/glazelhost/commands/shared_options.h"
#include "tools/glazelhost/host_error.h"

#include <tuple>
#include <utility>

namespace GlazelHost
{

namespace
{

double DifferenceOf(const char* option, const std::string& word)
{
    const auto difference = FractionOf(word);
    if (!difference || *difference < 0.0)
    {
        ThrowUsage("compare", std::string(option) + " " + word,
                   "a difference is a number from 0 on, as in 0.004 or 1/255");
    }
    return *difference;
}

} // namespace

void AddCompareOptions(CLI::App& command, CompareCommand& compare, CompareWords& words)
{
    command.add_option("A", compare.first.path, "what to compare")->required()->type_name("");
    command.add_option("B", compare.second.path, "what to compare it with")
        ->required()
        ->type_name("");
    command
        .add_option("--threshold", words.threshold,
                    "pixels that differ by more are counted (default: 1/255)")
        ->type_name("D");
    command
        .add_option("--warn-over", words.warnOver,
                    "end with exit code 3 when the largest difference is more")
        ->type_name("D");
    command
        .add_option("--fail-over", words.failOver,
                    "end with exit code 4 when the largest difference is more")
        ->type_name("D");
    command.add_option("--picture", compare.picture, "where to put a picture of the differences")
        ->type_name("FILE");
    command
        .add_option("--amplify", compare.amplify,
                    "factor of the differences in the picture (default: 16)")
        ->check(Undescribed(CLI::PositiveNumber))
        ->type_name("N");
    command.add_flag("--overwrite", compare.overwrite, "replace a picture that exists");
    command.add_option("--size", words.size, "size of raw input")->type_name("WxH");
    command.add_flag("--json", compare.json, "as one JSON object");
}

CompareCommand FinishCompare(CompareCommand compare, const CompareWords& words)
{
    for (const std::string& path : {compare.first.path, compare.second.path})
    {
        if (path == kStandardStream)
        {
            ThrowUsage("compare", "standard input", "what is compared has to be files");
        }
    }
    if (compare.picture == kStandardStream)
    {
        ThrowUsage("compare", "--picture -", "the picture goes to a file");
    }
    if (!compare.picture && compare.overwrite)
    {
        ThrowUsage("compare", "--overwrite", "it is for --picture, which is not there");
    }
    if (!std::isfinite(compare.amplify))
    {
        ThrowUsage("compare", "--amplify", "the number is not finite");
    }
    if (!words.threshold.empty())
    {
        compare.threshold = DifferenceOf("--threshold", words.threshold);
    }
    if (!words.warnOver.empty())
    {
        compare.warnOver = DifferenceOf("--warn-over", words.warnOver);
    }
    if (!words.failOver.empty())
    {
        compare.failOver = DifferenceOf("--fail-over", words.failOver);
    }
    if (!words.size.empty())
    {
        std::tie(compare.first.width, compare.first.height) = SizeOf(words.size, "compare");
        compare.second.width = compare.first.width;
        compare.second.height = compare.first.height;
    }
    return compare;
}

} // namespace GlazelHost
