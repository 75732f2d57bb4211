#include "reference_renderer/core/look_import.h"

#include "reference_renderer/core/import_report.h"
#include "tests/doubles/under_sanitizers.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <random>

namespace ReferenceRenderer
{

namespace
{

using namespace RendererAPI;

const std::string kCc = "<ColorCorrection id=\"warm\"><SOPNode><Slope>1.2 1 0.8</Slope></SOPNode>"
                        "</ColorCorrection>";
const std::string kCcc = "<ColorCorrectionCollection><ColorCorrection id=\"a\"/><ColorCorrection "
                         "id=\"b\"><SatNode><Saturation>0</Saturation></SatNode></ColorCorrection>"
                         "</ColorCorrectionCollection>";

class LookImport : public testing::Test
{
protected:
    LookImport()
    {
        m_files.files = {{"a.cube", CubeText(3, Inverted)}, {"a.cc", kCc}, {"a.ccc", kCcc}};
    }

    ImportedLook Import(const std::string& path, std::uint32_t options = 0) const
    {
        return ImportLook(path, options, m_files);
    }

    ImportError Failure(const std::string& path, std::uint32_t options = 0) const
    {
        try
        {
            Import(path, options);
            return {0, ""};
        }
        catch (const ImportError& error)
        {
            return error;
        }
    }

    void ExpectFailure(const std::string& path, std::int32_t code, const std::string& words) const
    {
        const ImportError error = Failure(path);
        EXPECT_EQ(error.code, code) << error.message;
        EXPECT_NE(error.message.find(words), std::string::npos) << error.message;
        EXPECT_EQ(error.message.find('\n'), std::string::npos);
    }

    // The imported look, ready to grade.
    std::unique_ptr<PreparedLook> Look(const std::string& path, std::uint32_t options = 0) const
    {
        auto look = std::make_unique<PreparedLook>();
        EXPECT_EQ(look->Read(Import(path, options).record), RecordState::Usable);
        return look;
    }

    MemoryFiles m_files;
};

} // namespace

TEST_F(LookImport, ContentsDecideNotTheExtension)
{
    m_files.files["cube.cc"] = m_files.files["a.cube"];
    m_files.files["cc.cube"] = kCc;
    m_files.files["noextension"] = kCc;
    EXPECT_EQ(Import("cube.cc").kind, "3D LUT");
    EXPECT_EQ(Import("cc.cube").kind, "CDL");
    EXPECT_EQ(Import("noextension").kind, "CDL");
}

TEST_F(LookImport, AByteOrderMarkIsSkipped)
{
    m_files.files["bom.cube"] = "\xEF\xBB\xBF" + m_files.files["a.cube"];
    m_files.files["bom.cc"] = "\xEF\xBB\xBF" + kCc;
    EXPECT_EQ(Import("bom.cube").kind, "3D LUT");
    EXPECT_EQ(Import("bom.cc").kind, "CDL");
}

TEST_F(LookImport, ACdlClampsUnlessToldOtherwise)
{
    EXPECT_EQ(Look("a.cc")->Stored().cdlMode, CdlMode::Clamped);
    EXPECT_EQ(Look("a.cc", kImportUnclampedCdl)->Stored().cdlMode, CdlMode::Unclamped);
}

TEST_F(LookImport, AnIdChoosesACorrection)
{
    EXPECT_EQ(Look("a.ccc")->Stored().cdl.saturation, 1.0F);
    EXPECT_EQ(Look("a.ccc#b")->Stored().cdl.saturation, 0.0F);
    ExpectFailure("a.ccc#x", kImportNotFound, "a.ccc: no correction has the id 'x'");
    ExpectFailure("a.cube#x", kImportNotFound, "a LUT holds no corrections");
}

TEST_F(LookImport, AFileWhoseNameHoldsTheMarkIsFound)
{
    m_files.files["take#2.cc"] = kCc;
    EXPECT_EQ(Import("take#2.cc").title, "warm");
    EXPECT_EQ(Import("take#2.cc#warm").title, "warm");
}

TEST_F(LookImport, ACdlAndALutMakeOneLookCdlFirst)
{
    const auto look = Look("a.ccc#b|a.cube");
    EXPECT_EQ(Import("a.ccc#b|a.cube").kind, "CDL and 3D LUT");
    // Grey first, then inverted.
    const float luma = 0.2126F * 0.8F + 0.7152F * 0.4F + 0.0722F * 0.2F;
    EXPECT_LT(Distance(look->Grade({0.8F, 0.4F, 0.2F}), {1 - luma, 1 - luma, 1 - luma}), 1e-4);
}

TEST_F(LookImport, OtherPairsOfFilesAreRefused)
{
    ExpectFailure("a.cube|a.cc", kImportBadArgument, "only as CDL|LUT");
    ExpectFailure("a.cc|a.cc", kImportBadArgument, "only as CDL|LUT");
    ExpectFailure("a.cube|a.cube", kImportBadArgument, "only as CDL|LUT");
    ExpectFailure("a.cc|missing.cube", kImportUnreadable, "missing.cube");
    ExpectFailure("a.cc|", kImportUnreadable, "cannot be opened");
}

TEST_F(LookImport, NeitherOfAPairLosesWhatItHolds)
{
    const auto list = [](const std::string& nodes) {
        return "<ProcessList id=\"x\">" + nodes + "</ProcessList>";
    };
    const std::string cdl = "<ASC_CDL inBitDepth=\"8i\" outBitDepth=\"8i\"/>";
    const std::string lut = "<LUT1D inBitDepth=\"8i\" outBitDepth=\"8i\"><Array dim=\"2 1\">255 "
                            "0</Array></LUT1D>";
    m_files.files["cdl.clf"] = list(cdl);
    m_files.files["lut.clf"] = list(lut);
    m_files.files["both.clf"] = list(cdl + lut);
    EXPECT_EQ(Import("cdl.clf|lut.clf").kind, "CDL and 1D LUT");
    ExpectFailure("both.clf|lut.clf", kImportBadArgument, "only as CDL|LUT");
    ExpectFailure("cdl.clf|both.clf", kImportBadArgument, "a LUT without one behind it");
}

TEST_F(LookImport, ALookFileIsTakenByteForByte)
{
    std::vector<std::uint8_t> record = Import("a.cube").record;
    record[16] = 0; // the option word is the user's
    m_files.files["a.look"] = std::string(record.begin(), record.end());
    const ImportedLook imported = Import("a.look");
    EXPECT_EQ(imported.kind, "look record");
    EXPECT_EQ(imported.contents, "3D LUT: 3 nodes a side, domain 0..1");
    EXPECT_TRUE(imported.record == record);
}

TEST_F(LookImport, DamagedAndNewerLookFilesAreRefused)
{
    const std::vector<std::uint8_t> record = Import("a.cube").record;
    m_files.files["cut.look"] = std::string(record.begin(), record.end() - 9);
    ExpectFailure("cut.look", kImportMalformed, "the look record is damaged");
    std::string newer(record.begin(), record.end());
    newer[4] = 3;
    m_files.files["newer.look"] = newer;
    ExpectFailure("newer.look", kImportUnrecognised, "newer version");
    m_files.files["text.look"] = "hello";
    ExpectFailure("text.look", kImportUnrecognised, "no look record");
}

TEST_F(LookImport, ContentsThatAreNoLookAreRefused)
{
    m_files.files = {{"empty.cube", ""},
                     {"a.txt", "hello\n"},
                     {"wide.cube", std::string("\xFF\xFEL\0U\0", 6)},
                     {"a.bin", std::string("\0\1\2\3", 4)}};
    ExpectFailure("empty.cube", kImportUnrecognised, "empty");
    ExpectFailure("a.txt", kImportUnrecognised, "a.txt: the contents are neither a LUT (.cube, ");
    ExpectFailure("wide.cube", kImportUnrecognised, "UTF-16");
    ExpectFailure("a.bin", kImportUnrecognised, "binary");
    ExpectFailure("none.cube", kImportUnreadable, "none.cube");
}

TEST_F(LookImport, BadArgumentsAreRefused)
{
    ExpectFailure("", kImportBadArgument, "no file is named");
    EXPECT_EQ(Failure("a.cube", 0x40).code, kImportBadArgument);
    EXPECT_EQ(Failure("a.cube", kImportDescribe).code, 0);
}

TEST_F(LookImport, ALutThatIsTooLargeIsResampledAndReported)
{
    m_files.files["big.cube"] = CubeText(66, Swirled);
    const ImportedLook imported = Import("big.cube");
    ASSERT_EQ(imported.warnings.size(), 1U);
    EXPECT_GT(imported.largestError, 1e-5);
    EXPECT_EQ(imported.contents, "3D LUT: 65 nodes a side, domain 0..1");
}

TEST_F(LookImport, TitlesAreKeptInTheRecordAndCutBetweenCharacters)
{
    std::string title;
    for (int i = 0; i < 40; ++i)
    {
        title += "\xC3\xA9";
    }
    m_files.files["t.cube"] = "TITLE \"" + title + "\"\n" + CubeText(2, Same);
    const ImportedLook imported = Import("t.cube");
    EXPECT_EQ(imported.title, title);
    StoredLook stored;
    ReadRecord(imported.record, stored);
    EXPECT_EQ(std::string(stored.title.data()), title.substr(0, 62));
}

TEST_F(LookImport, ReportsAreJsonOnOneLine)
{
    m_files.files["q.cube"] = "TITLE \"a \\ b \x01\"\n" + CubeText(2, Same);
    EXPECT_EQ(
        DescribeAsJson(Import("q.cube")),
        "{\"kind\":\"3D LUT\",\"title\":\"a \\\\ b ?\",\"contents\":\"3D LUT: 2 nodes a side, "
        "domain 0..1\",\"warnings\":[],\"largestError\":0}");
    EXPECT_EQ(DescribeAsJson("x \"y\"\n"), "{\"error\":\"x \\\"y\\\"?\"}");
}

TEST_F(LookImport, TheContentsOfACdlAreItsNumbers)
{
    EXPECT_EQ(Import("a.cc").contents,
              "CDL: slope 1.2 1 0.8, offset 0 0 0, power 1 1 1, saturation 1, clamped");
}

// Pieces of all kinds of file, shuffled and damaged: each text imports or is refused with one line.
TEST_F(LookImport, DamagedTextsAreImportedOrRefusedNothingElse)
{
    const std::vector<std::string> seeds{
        CubeText(3, Swirled), kCc, kCcc,
        "LUT_1D_SIZE 3\nLUT_1D_INPUT_RANGE 0 2\nLUT_3D_SIZE 2\n0 0 0\n.5 .5 .5\n1 1 1\n0 0 0\n1 0 "
        "0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n"};
    const std::string odd("\0\xFF\xEF\xBB\xBF<>/'\"=&#;-+e.0 \r\n", 22);
    constexpr unsigned kSeed = 17;
    constexpr int kTexts = UnderSanitizers(500, 2000);
    std::mt19937 random(kSeed);
    int imported = 0;
    for (int i = 0; i < kTexts; ++i)
    {
        std::string text = seeds[random() % seeds.size()];
        for (std::size_t changes = random() % 4; changes > 0; --changes)
        {
            const std::size_t at = random() % text.size();
            switch (random() % 3)
            {
            case 0:
                text[at] = odd[random() % odd.size()];
                break;
            case 1:
                text.erase(at, 1 + random() % 5);
                break;
            default:
                text.insert(at, text.substr(random() % text.size(), random() % 30));
                break;
            }
            text += text.empty() ? " " : "";
        }
        m_files.files["x"] = text;
        const ImportError error = Failure("x");
        imported += error.code == 0 ? 1 : 0;
        ASSERT_EQ(error.code == 0, error.message.empty()) << "seed " << kSeed << ", text " << i;
        ASSERT_EQ(error.message.find_first_of("\r\n"), std::string::npos) << error.message;
    }
    EXPECT_GT(imported, kTexts / 5);
}

} // namespace ReferenceRenderer
