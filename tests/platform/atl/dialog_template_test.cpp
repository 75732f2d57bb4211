#include "platform/atl/dialog_template.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace
{

// Builds a template's bytes field by field.
class TemplateBytes
{
public:
    TemplateBytes& U8(unsigned value)
    {
        bytes.push_back(static_cast<std::byte>(value & 0xFF));
        return *this;
    }
    TemplateBytes& U16(unsigned value) { return U8(value).U8(value >> 8); }
    TemplateBytes& U32(unsigned value) { return U16(value).U16(value >> 16); }
    TemplateBytes& Text(std::u16string_view text)
    {
        for (const char16_t unit : text)
        {
            U16(unit);
        }
        return U16(0);
    }
    // An extended head up to its size; no menu, class or title yet.
    TemplateBytes& ExtendedHead(unsigned style, unsigned width, unsigned height)
    {
        U16(1).U16(0xFFFF).U32(7).U32(0x10000).U32(style);
        return U16(3).U16(11).U16(12).U16(width).U16(height);
    }
    TemplateBytes& PlainHead(unsigned style, unsigned width, unsigned height)
    {
        return U32(style).U32(0x10000).U16(3).U16(11).U16(12).U16(width).U16(height);
    }

    std::vector<std::byte> bytes;
};

constexpr unsigned kChildWithFont = 0x40000040;
constexpr unsigned kChild = 0x40000000;

} // namespace

TEST(DialogTemplate, AnExtendedTemplateTellsItsSizeAndWholeFont)
{
    TemplateBytes text;
    text.ExtendedHead(kChildWithFont, 1000, 56).U16(0).U16(0).U16(0);
    text.U16(8).U16(700).U8(1).U8(2).Text(u"MS Sans Serif");
    const DialogMeasure expected{1000, 56, DialogFont{8, 700, true, 2, u"MS Sans Serif"}};
    EXPECT_EQ(MeasureDialogTemplate(text.bytes), expected);
}

TEST(DialogTemplate, APlainTemplateTellsItsSizeAndFont)
{
    TemplateBytes text;
    text.PlainHead(kChildWithFont, 200, 100).U16(0).U16(0).U16(0).U16(9).Text(u"Tahoma");
    const DialogMeasure expected{200, 100, DialogFont{9, 0, false, 1, u"Tahoma"}};
    EXPECT_EQ(MeasureDialogTemplate(text.bytes), expected);
}

TEST(DialogTemplate, OfTheMarksOfAnExtendedTemplateNoneIsEnough)
{
    const DialogMeasure expected{200, 100, DialogFont{9, 0, false, 1, u"Tahoma"}};
    for (const unsigned style : {0x40000041U, 0x00010001U | kChildWithFont, 0xFFFF0040U})
    {
        TemplateBytes text;
        text.PlainHead(style, 200, 100).U16(0).U16(0).U16(0).U16(9).Text(u"Tahoma");
        DialogMeasure measure = MeasureDialogTemplate(text.bytes).value_or(DialogMeasure());
        EXPECT_EQ(measure, expected) << style;
    }
}

TEST(DialogTemplate, WithoutTheFontStyleThereIsNoFont)
{
    TemplateBytes text;
    text.ExtendedHead(kChild, 20, 10).U16(0).U16(0).U16(0);
    EXPECT_EQ(MeasureDialogTemplate(text.bytes), (DialogMeasure{20, 10, std::nullopt}));
    TemplateBytes plain;
    plain.PlainHead(kChild, 20, 10).U16(0).U16(0).U16(0);
    EXPECT_EQ(MeasureDialogTemplate(plain.bytes), (DialogMeasure{20, 10, std::nullopt}));
}

TEST(DialogTemplate, MenuAndClassMayBeNamesOrNumbers)
{
    TemplateBytes numbers;
    numbers.ExtendedHead(kChildWithFont, 20, 10).U16(0xFFFF).U16(5).U16(0xFFFF).U16(0x80);
    numbers.Text(u"Title").U16(8).U16(0).U8(0).U8(1).Text(u"Face");
    TemplateBytes names;
    names.ExtendedHead(kChildWithFont, 20, 10).Text(u"Menu").Text(u"Class").Text(u"Title");
    names.U16(8).U16(0).U8(0).U8(1).Text(u"Face");
    const DialogMeasure expected{20, 10, DialogFont{8, 0, false, 1, u"Face"}};
    EXPECT_EQ(MeasureDialogTemplate(numbers.bytes), expected);
    EXPECT_EQ(MeasureDialogTemplate(names.bytes), expected);
}

TEST(DialogTemplate, ATemplateThatIsCutOffAnywhereIsNone)
{
    TemplateBytes extended;
    extended.ExtendedHead(kChildWithFont, 20, 10).Text(u"Menu").U16(0xFFFF).U16(1).Text(u"Title");
    extended.U16(8).U16(0).U8(0).U8(1).Text(u"Face");
    TemplateBytes plain;
    plain.PlainHead(kChildWithFont, 20, 10).U16(0).U16(0).U16(0).U16(9).Text(u"Tahoma");
    for (const std::vector<std::byte>& whole : {extended.bytes, plain.bytes})
    {
        ASSERT_TRUE(MeasureDialogTemplate(whole));
        for (std::size_t length = 0; length < whole.size(); ++length)
        {
            const std::vector<std::byte> part(whole.begin(),
                                              whole.begin() + static_cast<std::ptrdiff_t>(length));
            EXPECT_FALSE(MeasureDialogTemplate(part)) << length;
        }
    }
}
