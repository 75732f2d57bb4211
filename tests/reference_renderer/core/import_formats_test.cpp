#include "reference_renderer/core/import_formats.h"

#include "reference_renderer/core/look_import.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tools/glazelhost/commands/help_texts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

using namespace GlazelHost;

namespace ReferenceRenderer
{

namespace
{

std::string DocumentText(const std::string& name)
{
    std::ifstream file(GLAZEL_SOURCE_DIR "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A look of each ending: the same table, or the same correction.
std::map<std::string, std::string> Samples()
{
    const std::string points = "2\n0 1\n0 1\n";
    const std::string cc = "<ColorCorrection/>";
    const auto record = RecordOf(CubeLook(CubeOf(2, Same)));
    return {
        {".cube", CubeText(2, Same)},
        {".spi1d", "Version 1\nLength 2\nComponents 1\n{\n0\n1\n}\n"},
        {".spi3d", "SPILUT 1.0\n3 3\n2 2 2\n0 0 0 0 0 0\n0 0 1 0 0 1\n0 1 0 0 1 0\n0 1 1 0 1 1\n"
                   "1 0 0 1 0 0\n1 0 1 1 0 1\n1 1 0 1 1 0\n1 1 1 1 1 1\n"},
        {".csp", "CSPLUTV100\n1D\n" + points + points + points + "2\n0 0 0\n1 1 1\n"},
        {".3dl", "0 1023\n0 0 0\n0 0 1023\n0 1023 0\n0 1023 1023\n1023 0 0\n1023 0 1023\n"
                 "1023 1023 0\n1023 1023 1023\n"},
        {".clf", "<ProcessList id=\"x\"><LUT1D inBitDepth=\"32f\" outBitDepth=\"32f\"><Array dim="
                 "\"2 1\">0 1</Array></LUT1D></ProcessList>"},
        {".cc", cc},
        {".ccc", "<ColorCorrectionCollection>" + cc + "</ColorCorrectionCollection>"},
        {".cdl", "<ColorDecisionList>" + cc + "</ColorDecisionList>"},
        {".look", std::string(record.begin(), record.end())},
    };
}

} // namespace

TEST(ImportFormats, EveryFormatIsReadWhateverItsFileIsCalled)
{
    const std::map<std::string, std::string> samples = Samples();
    ASSERT_EQ(samples.size(), ImportFormats().size());
    for (const ImportFormat& format : ImportFormats())
    {
        const auto sample = samples.find(std::string(format.ending));
        ASSERT_NE(sample, samples.end()) << format.ending;
        MemoryFiles files;
        files.files["a"] = sample->second;
        EXPECT_NO_THROW({
            const ImportedLook imported = ImportLook("a", 0, files);
            EXPECT_EQ(imported.kind.find("CDL") == 0, format.group == FormatGroup::Cdl)
                << format.ending;
        }) << format.ending;
        if (format.looksLike != nullptr)
        {
            EXPECT_EQ(ImportFormatOf(sample->second, "a")->read, format.read) << format.ending;
        }
    }
}

TEST(ImportFormats, ALutThatIsNotRecognisedIsReadByItsEnding)
{
    EXPECT_EQ(ImportFormatOf("0 0 0\n", "b.CUBE")->ending, ".cube");
    EXPECT_EQ(ImportFormatOf("hello", "b.3dl")->ending, ".3dl");
    EXPECT_EQ(ImportFormatOf("hello", "b.csp")->ending, ".csp");
    EXPECT_EQ(ImportFormatOf("hello", "b.cc"), nullptr);
    EXPECT_EQ(ImportFormatOf("hello", "b.txt"), nullptr);
}

TEST(ImportFormats, WordsOfACubeInsideOtherFilesDoNotMatter)
{
    const std::string words = "\nLUT_3D_SIZE 33\n";
    EXPECT_EQ(ImportFormatOf("CSPLUTV100\n3D\nBEGIN METADATA" + words, "a")->ending, ".csp");
    EXPECT_EQ(ImportFormatOf("<ProcessList><Description>" + words, "a")->ending, ".clf");
    EXPECT_EQ(ImportFormatOf("<ColorCorrection><Description>" + words, "a")->group,
              FormatGroup::Cdl);
    EXPECT_EQ(ImportFormatOf("# 3DMESH" + words, "a")->ending, ".cube");
}

TEST(ImportFormats, TextsAndDocumentsNameEveryEnding)
{
    MemoryFiles files;
    const std::string unknown = ImportMessage("hello\n", "a.txt");
    for (const ImportFormat& format : ImportFormats())
    {
        const std::string ending(format.ending);
        if (format.group != FormatGroup::Record)
        {
            EXPECT_NE(unknown.find(ending), std::string::npos) << unknown;
        }
        EXPECT_NE(AllEndings().find(ending), std::string::npos);
        EXPECT_NE(std::string(kRenderFooter).find(ending), std::string::npos)
            << ending << " in the help of render";
        for (const char* document :
             {"README.md", "docs/look-editor.md", "docs/renderer-contract.md"})
        {
            EXPECT_NE(DocumentText(document).find("`" + ending + "`"), std::string::npos)
                << ending << " in " << document;
        }
    }
    EXPECT_EQ(EndingsOf(FormatGroup::Cdl), ".cc, .ccc, .cdl");
    EXPECT_EQ(AllEndings().find(".cdl or .look"), AllEndings().size() - 13);
}

TEST(ImportFormats, LutsHoldNoCorrectionsToChoose)
{
    for (const char* ending : {".csp", ".3dl", ".clf"})
    {
        MemoryFiles files;
        files.files["a"] = Samples()[ending];
        try
        {
            ImportLook("a#b", 0, files);
            ADD_FAILURE() << ending;
        }
        catch (const ImportError& error)
        {
            EXPECT_EQ(error.message,
                      "a: a LUT holds no corrections to choose by id; leave out '#b'");
        }
    }
}

} // namespace ReferenceRenderer
