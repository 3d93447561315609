#include "embedded/mif/reader.h"

#include <gtest/gtest.h>

#include "embedded/mif/strings.h"

namespace qelm::test {
namespace {

using namespace embedded::mif;

// The pieces of a file as one line: `Name(data)` for leaves, `Name{` and `}` for groups.
std::string Pieces(std::string_view bytes) {
  Reader reader(bytes);
  std::string line;
  while (reader.Next()) {
    if (reader.kind() == Piece::kGroupEnd) {
      line += "} ";
    } else {
      line += std::string(reader.name());
      line += reader.kind() == Piece::kGroup ? "{ " : "(" + std::string(reader.data()) + ") ";
    }
  }
  if (reader.Failed()) line += "! " + Describe(bytes, reader.error());
  return line;
}

TEST(MifReader, StatementsGroupsAndWhatLiesBetweenThem) {
  const struct {
    const char* bytes;
    const char* pieces;
  } kCases[] = {
      {"<MIFFile 7.00> # by hand\n", "MIFFile(7.00) "},
      {"<A <B 1><C `x'>>", "A{ B(1) C(`x') } "},
      {"<A \n > # end of A\n<B >", "A() B() "},
      {"< A\n1 2.5 \" >", "A(1 2.5 \") "},
      {"<A `a\\>b#c<d'>", "A(`a\\>b#c<d') "},
      {"<A `two\nlines'>", "A(`two\nlines') "},
      {"<A # not > this\n 5>", "A(5) "},
      {"<A <B # see > above\n>>", "A{ B() } "},
      {"<I <T Contour>\n=TIFF\n&%v\n&<`\\x00>\n=EndInset\n\n <F `p'>>", "I{ T(Contour) F(`p') } "},
      {"<Comment it's <nested> `here> <B 1>", "Comment(it's <nested> `here) B(1) "},
      {"define (Bold, <Font <FTag `B'>>)\ninclude (x.mif)\n<A 1>", "A(1) "},
      {"<A 1>\n.\n", "A(1) "},
  };
  // Statements with much behind them are read in another way than the last ones of a file.
  const std::string blanks(1000, ' ');
  for (const auto& test : kCases) {
    EXPECT_EQ(Pieces(test.bytes), test.pieces) << test.bytes;
    EXPECT_EQ(Pieces(test.bytes + blanks), test.pieces) << test.bytes;
  }
}

TEST(MifReader, DamageIsNamedWithItsPlace) {
  const struct {
    const char* bytes;
    const char* says;
  } kCases[] = {
      {"<A 1>\n<B\n <C 2>\n",
       "line 4, offset 16: expected '>' before the end of the file; <B> began in line 2"},
      {"<A `no end>", "expected an apostrophe that ends the string"},
      {"<A 1>>\n", "line 1, offset 5: expected the end of the file or '<'"},
      {"<A <B 1> stray>", "line 1, offset 9: expected a statement that begins with '<'"},
      {"<A <>>", "expected the name of a statement"},
      {"define (X, <A 1>", "expected ')' that ends a directive"},
      // The bracket is missing in line 2; the catalog in line 3 shows it.
      {"<PgfCatalog\n <Pgf <PgfTag `x'>\n<FontCatalog\n <Font <FTag `'>>>\n>\n",
       "line 3, offset 31: expected '>' before a statement of the top level (<FontCatalog>); <"},
  };
  for (const auto& test : kCases) {
    const std::string pieces = Pieces(test.bytes);
    EXPECT_NE(pieces.find(test.says), std::string::npos) << test.bytes << "\n  gave " << pieces;
  }
}

TEST(MifReader, DeepNestingAndCutsNeverFail) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<A ";
  EXPECT_NE(Pieces(deep).find("expected '>'"), std::string::npos);
  const std::string file = "<A <B `x\\>y'> # c\n=T\n&x\n <C <D 1>>> define (a,b) <E >";
  for (std::size_t size = 0; size <= file.size(); ++size) Pieces(file.substr(0, size));
}

TEST(MifStrings, EscapesAndCharacterSets) {
  const struct {
    const char* inside;
    const char* text;
  } kCases[] = {
      {"plain", "plain"},
      {"a\\>b\\q\\Q\\\\\\t", "a>b'`\\\t"},
      {"\\xa6  Font", "¶ Font"},  // one blank belongs to the escape, the other does not
      {"\\\\xd3", "\\xd3"},       // an escaped backslash, then plain text
      {"\\xd2 x\\xd3", "“x”"},    // the blank after the digits may be missing
      {"\\x11 \\x06 \\x04 ", "\u00A0\u00AD"},
      {"\\u20AC", "€"},
      {"\\z\\", "\\z\\"},  // not known: kept as it stands
      {"line\\nbreak", "line\nbreak"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(DecodeString("`" + std::string(test.inside) + "'", Encoding::kFrameRoman), test.text);
  }
}

TEST(MifStrings, WhatIsEncodedDecodesToTheSame) {
  for (const char* text : {"a>b'`\\\t\n", "Größe – „x“ €", "日本", "\u00A0\u2011"}) {
    for (const Encoding encoding : {Encoding::kFrameRoman, Encoding::kUtf8}) {
      const std::string inside = Encode(text, encoding);
      EXPECT_EQ(DecodeString("`" + inside + "'", encoding), text);
      if (encoding == Encoding::kFrameRoman) {
        for (const char c : inside) EXPECT_LT(static_cast<unsigned char>(c), 0x80);
      }
    }
  }
}

}  // namespace
}  // namespace qelm::test
