// FitsHeader: values, long texts, order, history, what a result drops.
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <hosts/io/fits_header.h>

namespace orb::test {
namespace {

using host::FitsHeader;

std::string Card(std::string text) {
  text.resize(80, ' ');
  return text;
}

FitsHeader HeaderOf(std::vector<std::string> const& lines) {
  FitsHeader header;
  for (auto const& line : lines) header.cards.push_back(Card(line));
  return header;
}

TEST(FitsHeader, ReadsValues) {
  FitsHeader const header =
      HeaderOf({"OBJECT  = 'M 13    '           / the target", "EXPTIME =                 60.5 / s",
                "GAIN    =               1.5D-3", "COUNT   = +12", "QUOTE   = 'it''s / here'",
                "FLAG    =                    T", "EMPTY   =", "NOTHING = / nothing",
                "HIERARCH ESO DET NAME = 'chip 1' / which", "HIERARCH ESO DET ID = 7", "HISTORY = 5", "COMMENT a = 3"});
  EXPECT_EQ("M 13", header.Text("OBJECT"));
  EXPECT_EQ(60.5, header.Number("EXPTIME"));
  EXPECT_EQ("60.5", header.Text("EXPTIME"));
  EXPECT_EQ(1.5e-3, header.Number("GAIN"));
  EXPECT_EQ(12.0, header.Number("COUNT"));
  EXPECT_EQ("it's / here", header.Text("QUOTE"));
  EXPECT_EQ("T", header.Text("FLAG"));
  EXPECT_EQ("chip 1", header.Text("ESO DET NAME"));
  EXPECT_EQ(7.0, header.Number("ESO DET ID"));
  EXPECT_EQ(std::nullopt, header.Number("OBJECT"));
  EXPECT_EQ(std::nullopt, header.Number("FLAG"));
  EXPECT_EQ(std::nullopt, header.Number("EMPTY"));
  EXPECT_EQ(std::nullopt, header.Number("NOTHING"));
  EXPECT_EQ(std::nullopt, header.Number("ABSENT"));
  EXPECT_EQ(std::nullopt, header.Text("ABSENT"));
  EXPECT_EQ(std::nullopt, header.Text("HISTORY"));
  EXPECT_TRUE(header.Has("FLAG"));
  EXPECT_FALSE(header.Has("FLA"));
}

TEST(FitsHeader, ChangesInPlaceAndKeepsTheComment) {
  FitsHeader header = HeaderOf({"A       =                    1 / first", "B       = 2", "HISTORY x"});
  header.SetNumber("A", 2.5, "");
  header.SetInteger("B", -7, "count");
  header.SetText("C", "new", "third");
  ASSERT_EQ(4u, header.cards.size());
  EXPECT_EQ(Card("A       =                  2.5 / first"), header.cards[0]);
  EXPECT_EQ(Card("B       =                   -7 / count"), header.cards[1]);
  EXPECT_EQ(Card("C       = 'new     '           / third"), header.cards[2]);  // before the history
  EXPECT_EQ(Card("HISTORY x"), header.cards[3]);
}

TEST(FitsHeader, NumbersReadBackAsTheSameDouble) {
  FitsHeader header;
  for (double value : {0.1, -1e300, 5e-324, 1.0 / 3.0, 65535.0, 0.0, 123456789012345680.0}) {
    header.SetNumber("X", value, "a comment");
    EXPECT_EQ(value, header.Number("X"));
    EXPECT_EQ(1u, header.cards.size());
    EXPECT_EQ(80u, header.cards[0].size());
  }
}

TEST(FitsHeader, WholeNumbersKeepAPoint) {
  FitsHeader header;
  header.SetNumber("X", 3.0, "");
  EXPECT_EQ("3.0", header.Text("X"));
}

TEST(FitsHeader, NumbersThatAreNotFiniteAreUndefined) {
  FitsHeader header;
  header.SetNumber("X", std::numeric_limits<double>::quiet_NaN(), "none");
  EXPECT_EQ(Card("X       =                      / none"), header.cards[0]);
  EXPECT_EQ(std::nullopt, header.Number("X"));
}

TEST(FitsHeader, LongTextsContinue) {
  FitsHeader header = HeaderOf({"HISTORY old"});
  std::string text;
  for (int i = 0; i < 40; ++i) text += "it's " + std::to_string(i) + (i % 3 == 0 ? "&" : " ");
  text += "end";
  header.SetText("LONG", text, "a long one");
  EXPECT_GT(header.cards.size(), 4u);
  for (std::string const& card : header.cards) EXPECT_EQ(80u, card.size());
  EXPECT_EQ(text, header.Text("LONG"));
  header.SetText("LONG", "short", "");
  EXPECT_EQ("short", header.Text("LONG"));
  EXPECT_EQ(2u, header.cards.size());
  header.SetText("LONG", text, "");
  header.Remove("LONG");
  EXPECT_EQ(std::vector<std::string>{Card("HISTORY old")}, header.cards);
}

TEST(FitsHeader, TextsOfEveryLengthReadBack) {
  for (std::size_t length = 0; length < 210; ++length) {
    FitsHeader header;
    std::string const text(length, length % 2 == 0 ? '\'' : 'x');
    header.SetText("T", text, "");
    EXPECT_EQ(text, header.Text("T")) << length;
  }
}

TEST(FitsHeader, LongKeywordsAreHierarchOnes) {
  FitsHeader header;
  header.SetNumber("STACK WEIGHT", 0.5, "");
  EXPECT_EQ(0u, header.cards[0].find("HIERARCH STACK WEIGHT = "));
  EXPECT_EQ(0.5, header.Number("STACK WEIGHT"));
}

TEST(FitsHeader, HistoryIsWrappedAtBlanks) {
  FitsHeader header;
  std::string text;
  for (int i = 0; i < 30; ++i) text += "word" + std::to_string(i) + " ";
  header.AddHistory(text + "last");
  ASSERT_EQ(3u, header.cards.size());
  std::string joined;
  for (std::string const& card : header.cards) {
    EXPECT_EQ("HISTORY ", card.substr(0, 8));
    joined += card.substr(8, card.find_last_not_of(' ') - 7) + " ";
  }
  EXPECT_EQ(text + "last ", joined);
}

TEST(FitsHeader, HistoryWithoutBlanksIsCut) {
  FitsHeader header;
  header.AddHistory(std::string(100, 'x'));
  ASSERT_EQ(2u, header.cards.size());
  EXPECT_EQ("HISTORY " + std::string(72, 'x'), header.cards[0]);
  EXPECT_EQ(Card("HISTORY " + std::string(28, 'x')), header.cards[1]);
  header.AddHistory("");
  EXPECT_EQ(Card("HISTORY"), header.cards[2]);
}

TEST(FitsHeader, OnlyPrintableAsciiGoesIn) {
  FitsHeader header;
  header.SetText("T", "caf\xc3\xa9\n", "");
  EXPECT_EQ("caf???", header.Text("T"));
}

TEST(FitsHeader, RemovesWcsOnly) {
  FitsHeader header =
      HeaderOf({"CTYPE1  = 'RA---TAN'", "CRPIX2  = 1.0", "CD1_2   = 0.1", "PC001002= 3", "CDELT1A = 4", "A_0_2   = 5",
                "AP_ORDER= 2", "PV1_1   = 4", "WCSAXES = 2", "RADESYS = 'ICRS'", "CROTA2  = 0", "OBJECT  = 'x'",
                "CCD-TEMP= -10", "A       = 5", "CDATE   = 'x'", "EXPTIME = 3", "HISTORY CRPIX1 was 5"});
  header.RemoveWcs();
  std::vector<std::string> const expected{Card("PC001002= 3"),         Card("OBJECT  = 'x'"), Card("CCD-TEMP= -10"),
                                          Card("A       = 5"),         Card("CDATE   = 'x'"), Card("EXPTIME = 3"),
                                          Card("HISTORY CRPIX1 was 5")};
  EXPECT_EQ(expected, header.cards);
}

TEST(FitsHeader, KnowsWhatDescribesTheArray) {
  for (char const* keyword : {"SIMPLE", "XTENSION", "BITPIX", "NAXIS", "NAXIS1", "NAXIS12", "EXTEND", "BSCALE", "BZERO",
                              "BLANK", "DATAMIN", "DATAMAX", "CHECKSUM", "DATASUM", "ZIMAGE", "ZNAXIS2", "END"}) {
    EXPECT_TRUE(FitsHeader::IsStructural(keyword)) << keyword;
  }
  for (char const* keyword : {"OBJECT", "NAXISX", "ROWORDER", "HISTORY", "BUNIT", "ZENITH", "", "EXTNAME"}) {
    EXPECT_FALSE(FitsHeader::IsStructural(keyword)) << keyword;
  }
}

}  // namespace
}  // namespace orb::test
