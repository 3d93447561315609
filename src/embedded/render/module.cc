// What the module of pages exports. Nothing is thrown out of it.
#include <exception>

#include "embedded/render/design/page_maker.h"
#include "embedded/render/pdf_metadata.h"
#include "embedded/render/print.h"

namespace qelm::embedded::render {
namespace {

void Say(const char* problem, std::string* why) noexcept {
  try {
    *why = problem;
  } catch (...) {
    why->clear();
  }
}

// What the work returns; nothing, with `why`, when it throws.
template <typename Work>
auto Guarded(std::string* why, Work work) noexcept -> decltype(work()) {
  try {
    return work();
  } catch (const std::exception& problem) {
    Say(problem.what(), why);
  } catch (...) {
    Say("the pages were given up", why);
  }
  return decltype(work())();
}

class GuardedPdf : public PdfMaker {
 public:
  explicit GuardedPdf(const PrintOptions& options) : print_(options) {}

  void Announce(const model::Document& document, const std::string& path) override {
    Guarded(&failed_, [&] { print_.Announce(document, path); });
  }
  std::size_t Add(const PrintSource& source) override {
    return failed_.empty() ? Guarded(&failed_, [&] { return print_.Add(source); }) : 0;
  }
  std::string Status() const override {
    std::string why;
    const std::string status = Guarded(&why, [&] { return failed_.empty() ? print_.Status() : failed_; });
    return status.empty() ? why : status;
  }
  std::string Finish(std::string* why) override {
    return Guarded(why, [&] {
      if (failed_.empty()) return print_.Finish(why);
      *why = failed_;
      return std::string();
    });
  }
  std::vector<std::string> Notices() const override {
    std::string why;
    return Guarded(&why, [&] { return print_.Notices(); });
  }

 private:
  PdfPrint print_;
  std::string failed_;  // why a document could not be added
};

class ModuleMaker : public PageMaker {
 public:
  std::unique_ptr<PdfMaker> BeginPdf(const PrintOptions& options, std::string* why) const override {
    return Guarded(why, [&]() -> std::unique_ptr<PdfMaker> { return std::make_unique<GuardedPdf>(options); });
  }
  std::optional<std::string> PutMetadata(std::string pdf, std::string_view packet, std::string* warning,
                                         std::string* why) const override {
    return Guarded(why, [&] { return render::PutMetadata(std::move(pdf), packet, warning, why); });
  }
  std::string Png(const PrintSource& source, const PrintOptions& options, std::size_t page, double dpi,
                  std::vector<std::string>* notices, std::string* why) const override {
    return Guarded(why, [&] { return PrintPng(source, options, page, dpi, notices, why); });
  }
  FoundPages Find(const PrintSource& source, std::string* why) const override {
    return Guarded(why, [&] { return FindPages(source); });
  }
};

}  // namespace
}  // namespace qelm::embedded::render

extern "C" __attribute__((visibility("default"))) const qelm::embedded::render::PageMaker* qelm_page_maker(
    const char* stamp) {
  namespace render = qelm::embedded::render;
  static const render::ModuleMaker maker;
  return std::string_view(stamp) == render::PageMakerStamp() ? &maker : nullptr;
}
