// A bound on the work of reading a document: bytes that are read, inflated and returned.
#ifndef SORRELIN_DOCUMENT_WORK_BUDGET_H_
#define SORRELIN_DOCUMENT_WORK_BUDGET_H_

#include <sorrelin/platform/types.h>

#include <cstdint>

namespace sorrelin {

// An opening has one budget for all its fetches; later each fetch has its own, with those inside
// it. They are far above what any document needs, yet small enough that one made to waste time is
// done soon.
class WorkBudget {
 public:
  // Takes `bytes` off what is left; false, with nothing left, if they are more.
  bool Spend(uint64_t bytes) {
    bool const enough = bytes <= left_;
    left_ -= enough ? bytes : left_;
    return enough;
  }
  uint64_t& left() { return left_; }
  bool IsUsedUp() const { return left_ == 0; }
  bool IsOpening() const { return opening_; }

  // For its life the document is being opened.
  class Opening {
   public:
    Opening(WorkBudget& work, DWORD document_bytes) : work_(work) {
      work_.opening_ = true;
      work_.left_ = Of(document_bytes);
    }
    ~Opening() {
      work_.opening_ = false;
      work_.left_ = UINT64_MAX;
    }
    Opening(Opening const&) = delete;
    Opening& operator=(Opening const&) = delete;

   private:
    WorkBudget& work_;
  };

  // For its life an object is fetched, and maybe others on its behalf.
  class Fetch {
   public:
    Fetch(WorkBudget& work, DWORD document_bytes) : work_(work) {
      if (!work_.opening_ && work_.depth_ == 0) work_.left_ = Of(document_bytes);
      ++work_.depth_;
    }
    ~Fetch() { --work_.depth_; }
    Fetch(Fetch const&) = delete;
    Fetch& operator=(Fetch const&) = delete;

    // References that lead back to themselves end here.
    bool IsTooDeep() const { return work_.depth_ > kMostLevels; }

   private:
    WorkBudget& work_;
  };

 private:
  static constexpr DWORD kMostLevels = 32;
  static constexpr uint64_t kBase = 128 * 1024 * 1024;
  static constexpr uint64_t kPerByte = 64;

  static uint64_t Of(DWORD document_bytes) { return kBase + kPerByte * document_bytes; }

  uint64_t left_ = UINT64_MAX;
  bool opening_ = false;
  DWORD depth_ = 0;  // fetches that run inside one another
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_WORK_BUDGET_H_
