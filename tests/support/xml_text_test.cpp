#include "support/xml_text.h"

#include <gtest/gtest.h>

TEST(XmlText, NothingInItIsMarkup)
{
    EXPECT_EQ(XmlEscaped("a < \"b\" & c > d"), "a &lt; &quot;b&quot; &amp; c &gt; d");
    EXPECT_EQ(XmlEscaped(""), "");
}

TEST(XmlText, KeepsOtherLettersAndNoControlCharacter)
{
    EXPECT_EQ(XmlEscaped("Grüße\n\x01'"), "Grüße  '");
}
