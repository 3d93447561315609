// Books: their components, the paths of these, and the elements that a book keeps of them.

#include <gtest/gtest.h>

#include "embedded/model/book_edit.h"
#include "embedded/model/edit.h"
#include "embedded/model/files.h"

namespace qelm::test {
namespace {

using namespace embedded::model;

constexpr std::string_view kBook =
    "<Book 7.0> # x\r\n"
    "<BookComponent \r\n <FileName `<c\\>toc.fm'>\r\n <DeriveType TOC>\r\n <DeriveTag `T'>\r\n>\r\n"
    "<BookComponent <FileName `<v\\>M:<c\\>D\\xd4 s<c\\>ch1.fm'> <DisplayText `First \\xd2 one\\xd3 '> >\r\n"
    "<BookComponent <FileName `<u\\><c\\>ch2.fm'>>\r\n"
    "<BookElements \r\n"
    " <ElementBegin <ETag `Manual'> <Attributes <Attribute <AttrName `A'> <AttrValue `1'> <AttrValue "
    "`2'>>>>\r\n"
    "  <Element <ETag `'> <EComponent 0>>\r\n"
    "  <ElementBegin <ETag `Part'>>\r\n"
    "   <Element <ETag `Chapter'> <EComponent 1> <Attributes >>\r\n"
    "  <ElementEnd `Part'>\r\n"
    "  <Element <ETag `Chapter'> <EComponent 7>>\r\n"
    " <ElementEnd `Manual'>\r\n>\r\n# End of Book\r\n";

TEST(Book, HasComponentsInOrder) {
  std::string error;
  const auto book = BuildBook(std::string(kBook), &error);
  ASSERT_NE(book, nullptr) << error;
  ASSERT_EQ(book->components.size(), 3U);
  EXPECT_TRUE(book->components[0].generated);
  EXPECT_EQ(book->components[0].path, "toc.fm");
  EXPECT_FALSE(book->components[1].generated);
  EXPECT_EQ(book->components[1].path, "M:/D\xE2\x80\x98s/ch1.fm");
  EXPECT_EQ(book->components[1].entry_text, "First \xE2\x80\x9Cone\xE2\x80\x9D");
  EXPECT_EQ(book->components[2].path, "../ch2.fm");
  EXPECT_EQ(book->tree.At(book->components[2].span), "<BookComponent <FileName `<u\\><c\\>ch2.fm'>>");
}

TEST(Book, AttributesOfItsOwnElementsAreWritten) {
  std::string error;
  const auto book = BuildBook(std::string(kBook), &error);
  const Id root = book->tree.flows[1].root;
  ASSERT_TRUE(SetAttributes(&book->tree, root, {{"A", {"1", "2"}}, {"Audience", {"expert"}}}));
  const std::string saved = BookPieces(*book).Joined();
  const auto again = BuildBook(saved, &error);
  ASSERT_NE(again, nullptr) << error;
  EXPECT_EQ(again->tree.elements[again->tree.flows[1].root].attribute_count, 2U);
  EXPECT_EQ(again->components.size(), 3U);
  const std::size_t elements = kBook.find("  <Element <ETag");
  EXPECT_TRUE(saved.ends_with(kBook.substr(elements))) << "nothing else changes";
  EXPECT_NE(saved.find("<AttrName `Audience'>"), std::string::npos);
}

TEST(Book, KeepsTheElementsOfItsComponents) {
  std::string error;
  const auto book = BuildBook(std::string(kBook), &error);
  const Document& tree = book->tree;
  ASSERT_EQ(tree.elements.size(), 6U);
  const Element& root = tree.elements[tree.flows[1].root];
  EXPECT_EQ(tree.definitions[root.definition].name, "Manual");
  EXPECT_EQ(tree.attributes[root.first_attribute].value_count, 2U);
  const Element& part = tree.elements[tree.elements[root.first_child].next];
  EXPECT_EQ(tree.definitions[part.definition].name, "Part");
  EXPECT_EQ(book->element_components[root.first_child], 0U);
  EXPECT_EQ(book->element_components[part.first_child], 1U);
  EXPECT_EQ(book->element_components[root.last_child], kNoIndex);
  ASSERT_EQ(tree.warnings.size(), 1U);
  EXPECT_EQ(tree.warnings[0].text, "line 15: an element names a component that the book does not have");
}

TEST(Book, SeveralTopElementsAndDamage) {
  std::string error;
  const auto book =
      BuildBook("<Book 8.0><BookElements <Element <ETag `A'>><Element <ETag `B'>><ElementEnd `B'>>", &error);
  ASSERT_NE(book, nullptr) << error;
  const Element& root = book->tree.elements[book->tree.flows[1].root];
  EXPECT_TRUE(root.is_virtual);
  EXPECT_EQ(book->tree.elements[root.first_child].next, root.last_child);
  EXPECT_EQ(BuildBook("<Book 7.0>\n<BookComponent <FileName `a'>", &error), nullptr);
  EXPECT_NE(error.find("line 2"), std::string::npos) << error;
}

std::string Without(std::string text, std::string_view part, std::string_view instead = "") {
  const std::size_t at = text.find(part);
  EXPECT_NE(at, std::string::npos) << part;
  return text.replace(at, part.size(), instead);
}

TEST(Book, OnlyWhatWasChangedIsWritten) {
  std::string error;
  const auto book = BuildBook(std::string(kBook) + "<BookXRef <XRefSrcFile `<c\\>toc.fm'>>\r\n", &error);
  ASSERT_NE(book, nullptr) << error;
  const std::string source(book->tree.source);
  EXPECT_EQ(BookPieces(*book).Joined(), source);

  SetEntryText(book.get(), 1, "<none>");
  EXPECT_EQ(BookPieces(*book).Joined(), Without(source, "First \\xd2 one\\xd3 ", "<none\\>"));
  SetEntryText(book.get(), 0, "List");
  EXPECT_NE(BookPieces(*book).Joined().find("<FileName `<c\\>toc.fm'>\r\n <DisplayText `List'>\r\n"),
            std::string::npos);

  SetComponentFile(book.get(), 0, "lists/toc.mif");
  EXPECT_EQ(book->components[0].path, "lists/toc.mif");
  const std::string moved = BookPieces(*book).Joined();
  EXPECT_NE(moved.find("<FileName `<c\\>lists<c\\>toc.mif'>"), std::string::npos);
  EXPECT_NE(moved.find("<XRefSrcFile `<c\\>lists<c\\>toc.mif'>"), std::string::npos) << "it follows";
}

TEST(Book, ReferencesFollowTheFileThatTheyWereReadFor) {
  std::string error;
  const std::string refs = "<BookXRef <XRefSrcFile `<c\\>a.fm'>>\n<BookXRef <XRefSrcFile `<c\\>b.fm'>>\n";
  const std::string files =
      "<BookComponent <FileName `<c\\>a.fm'>>\n<BookComponent <FileName `<c\\>b.fm'>>\n";
  const auto book = BuildBook("<Book 8.0>\n" + files + refs, &error);
  ASSERT_NE(book, nullptr) << error;
  SetComponentFile(book.get(), 0, "b.fm");
  SetComponentFile(book.get(), 1, "c.fm");
  EXPECT_NE(
      BookPieces(*book).Joined().find("<XRefSrcFile `<c\\>b.fm'>>\n<BookXRef <XRefSrcFile `<c\\>c.fm'>"),
      std::string::npos);
}

TEST(Book, ComponentGoesWithItsElementAndTheOthersAreCountedAnew) {
  std::string error;
  const auto book = BuildBook(std::string(kBook), &error);
  ASSERT_TRUE(RemoveComponent(book.get(), 0));
  std::string expected = Without(
      std::string(kBook),
      "<BookComponent \r\n <FileName `<c\\>toc.fm'>\r\n <DeriveType TOC>\r\n <DeriveTag `T'>\r\n>\r\n");
  expected = Without(expected, "  <Element <ETag `'> <EComponent 0>>\r\n");
  expected = Without(expected, "<EComponent 1>", "<EComponent 0>");
  const std::string written = BookPieces(*book).Joined();
  EXPECT_EQ(written, expected);
  const Element& root = book->tree.elements[book->tree.flows[1].root];
  const auto again = BuildBook(written, &error);
  ASSERT_NE(again, nullptr) << error;
  EXPECT_EQ(again->components.size(), 2U);
  EXPECT_EQ(book->tree.definitions[book->tree.elements[root.first_child].definition].name, "Part");
}

TEST(Book, GroupsHoldComponentsAndAreNone) {
  std::string error;
  const std::string source =
      "<Book 2019>\n<BookComponent\n <DisplayText `Part'>\n <BookComponent <FileName `<c\\>a.fm'>>\n"
      " <BookComponent <FileName `<c\\>b.fm'> <ExcludeFile Yes>>\n>\n<BookComponent <FileName "
      "`<c\\>c.fm'>>\n";
  const auto book = BuildBook(source, &error);
  ASSERT_NE(book, nullptr) << error;
  ASSERT_EQ(book->components.size(), 4U);
  EXPECT_TRUE(book->components[0].is_group);
  EXPECT_EQ(book->components[0].entry_text, "Part");
  EXPECT_EQ(book->components[1].path, "a.fm");
  EXPECT_TRUE(book->components[2].excluded);
  EXPECT_EQ(book->components[3].path, "c.fm");
  EXPECT_FALSE(RemoveComponent(book.get(), 0)) << "it holds others";
  EXPECT_TRUE(RemoveComponent(book.get(), 1));
  EXPECT_EQ(BookPieces(*book).Joined(), Without(source, " <BookComponent <FileName `<c\\>a.fm'>>\n"));
}

TEST(Book, PathsOfEveryKind) {
  struct Row {
    std::string_view device_independent;
    std::string_view path;
  };
  const Row rows[] = {
      {"<c>a.fm", "a.fm"},
      {"<c>d<c>a.fm", "d/a.fm"},
      {"<r><c>usr<c>a.fm", "/usr/a.fm"},
      {"<u><u><c>a.fm", "../../a.fm"},
      {"<v>C:<c>d<c>a.fm", "C:/d/a.fm"},
      {"<h>host<c>share<c>a.fm", "//host/share/a.fm"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(PlatformPath(row.device_independent), row.path);
    EXPECT_EQ(DeviceIndependentPath(row.path), row.device_independent);
  }
  EXPECT_EQ(PlatformPath("d\\a.fm"), "d/a.fm");
  EXPECT_EQ(DeviceIndependentPath("./d//a.fm"), "<c>d<c>a.fm");
}

}  // namespace
}  // namespace qelm::test
