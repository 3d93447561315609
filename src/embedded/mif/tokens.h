// The statement names of MIF that the model acts on. Every other name is kUnknown and is carried through as
// it stands. One name may be a scalar in one place and a group in another, so a token says nothing about the
// form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qelm::embedded::mif {

// clang-format off
#define QELM_MIF_TOKENS(X)                                                                                   \
  X(AFrame)                                                                                                  \
  X(AFrames) X(ATbl) X(AlsoInsert) X(AttrName) X(AttrValue) X(Attribute) X(Attributes) X(Book) X(            \
      BookComponent) X(BookElements) X(BookSettings) X(BookXRef) X(BNextUnique) X(Cell) X(CellColumns)       \
      X(CellContent) X(Char) X(Color) X(ColorBlack) X(ColorCatalog) X(ColorCyan) X(ColorMagenta) X(ColorTag) \
          X(ColorYellow) X(Comment) X(Condition) X(ConditionCatalog) X(Conditional) X(CState) X(CTag) X(     \
              DeriveType) X(DisplayText) X(DNextUnique) X(DPageSize) X(DShowAllConditions) X(Document)       \
              X(EComponent) X(EDAttrChoice) X(EDAttrChoices) X(EDAttrDef) X(EDAttrDefValue) X(               \
                  EDAttrDefValues) X(EDAttrDefinitions) X(EDAttrHidden) X(EDAttrName) X(EDAttrReadOnly)      \
                  X(EDAttrRequired) X(EDAttrType) X(EDGeneralRule) X(EDObject) X(EDPgfFormat) X(EDTag) X(    \
                      EDValidHighestLevel) X(ETag) X(ETextSnippet) X(Element) X(ElementBegin) X(ElementDef)  \
                      X(ElementDefCatalog) X(ElementEnd) X(FBackgroundColor) X(FChangeBar) X(                \
                          FColor) X(FLocked) X(FNote) X(FOverline) X(FSeparation)                            \
                          X(FStrike) X(FTag) X(FUnderlining) X(FileName) X(FmtChangeListCatalog) X(Font) X(  \
                              FontCatalog) X(Frame) X(FrameType)                                             \
                              X(Group) X(ID) X(ImportObFile) X(ImportObFileDI) X(ImportObject) X(            \
                                  InCondition) X(KumihanCatalog) X(MIFFile) X(MText)                         \
                                  X(MType) X(MTypeName) X(MarkerTypeCatalog) X(Marker) X(Math)               \
                                      X(Notes) X(Page) X(PageBackground) X(PageNum) X(                       \
                                          PageTag) X(PageType) X(Para) X(ParaLine)                           \
                                          X(Pgf) X(PgfCatalog) X(PgfCondFullPgf) X(PgfEndCond) X(PgfFont) X( \
                                              PgfNumString) X(PgfReferenced)                                 \
                                              X(PgfTag) X(PrefixEnd) X(Row) X(RubiText) X(RulingCatalog) X(  \
                                                  String) X(SuffixBegin) X(TFAutoConnect) X(TFTag) X(Tbl)    \
                                                  X(TblBody) X(TblCatalog) X(TblF) X(TblFormat) X(TblH) X(   \
                                                      TblID) X(TblNumColumns) X(TblTag) X(TblTitle)          \
                                                      X(TblTitleContent) X(Tbls) X(TextFlow) X(TextInset) X( \
                                                          TextInsetEnd) X(TextRect)                          \
                                                          X(TextRectID) X(TiLocked) X(TextInsetLocked) X(    \
                                                              TiSrcFile) X(TiName) X(Unconditional)          \
                                                              X(Unique) X(Units) X(Variable) X(VariableDef)  \
                                                                  X(VariableFormat) X(VariableFormats) X(    \
                                                                      VariableName) X(VariableLocked)        \
                                                                      X(Views) X(XRef) X(XRefDef)            \
                                                                          X(XRefEnd) X(XRefFormat)           \
                                                                              X(XRefFormats) X(XRefName)     \
                                                                                  X(XRefSrcFile)             \
                                                                                      X(XRefSrcIsElem)       \
                                                                                          X(XRefSrcText)
// clang-format on

enum class Token : std::uint16_t {
  kUnknown = 0,
#define QELM_MIF_TOKEN(name) k##name,
  QELM_MIF_TOKENS(QELM_MIF_TOKEN)
#undef QELM_MIF_TOKEN
};
#define QELM_MIF_TOKEN(name) +1
constexpr std::size_t kTokenCount = 1 QELM_MIF_TOKENS(QELM_MIF_TOKEN);
#undef QELM_MIF_TOKEN

// The token of a statement name, compared exactly as MIF does; kUnknown for any other name.
Token FindToken(std::string_view name);

// The name of a token; empty for kUnknown.
std::string_view TokenName(Token token);

// Whether FrameMaker writes the statement only at the top level of a file, in column 1. Such a name inside a
// group is how a missing bracket shows.
bool IsTopLevelOnly(Token token);

}  // namespace qelm::embedded::mif
