// The transfer of pictures from a child. Its messages: a letter, the number of bytes that follow
// (32 bits), and these bytes.
//
//   O  the document is open: its pages (32 bits)
//   B  a page begins: its place in the list of wanted pages (32 bits)
//   N  a picture file begins: picture, width, height, depth, dots per inch across and down (32 bits
//      each), the length of the coding's name (32 bits), that name, and the extension
//   D  bytes of the file: their place (64 bits), and they
//   E  the file is complete
//   P  a picture fails: its number, or 0 for the page (32 bits), and why
//   F  the page is finished
//   X  the document cannot be read: why
//   Z  everything has been sent; a child that ends without it has failed
#include "tools/extract/page_transfer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <optional>

#include "tools/cli/messages.h"
#include "tools/documents/child.h"

namespace sorrelin::tool {
namespace {

constexpr size_t kPieceBytes = size_t{256} << 10;  // the bytes of a file in one message
constexpr size_t kHeadBytes = 5;
constexpr size_t kHeadNumbers = 7;
constexpr int kMaxReaders = 100;  // of one document, one after the other

std::string TextOf(DWORD number) { return {reinterpret_cast<char const*>(&number), sizeof number}; }

DWORD NumberAt(std::string_view payload, size_t index) {
  DWORD value = 0;
  if (payload.size() >= (index + 1) * sizeof value) {
    std::memcpy(&value, payload.data() + index * sizeof value, sizeof value);
  }
  return value;
}

std::string_view Behind(std::string_view payload, size_t bytes) {
  return payload.substr(std::min(bytes, payload.size()));
}

// In the child. Messages wait for one another, so that a page takes few calls of the system.
class Sender : public PictureSender, private ByteOutput {
 public:
  explicit Sender(ParentLink& link) : link_(link) {}

  ByteOutput& Begin(PictureHead const& head) override {
    Flush();
    Restart();
    std::string payload;
    for (DWORD const number :
         {head.picture, head.width, head.height, static_cast<DWORD>(head.depth),
          static_cast<DWORD>(head.dpi.x), static_cast<DWORD>(head.dpi.y),
          static_cast<DWORD>(head.coding.size())}) {
      payload += TextOf(number);
    }
    Send('N', payload + head.coding + head.extension);
    return *this;
  }

  void End() override {
    Flush();
    Send('E', {});
  }

  void Fail(DWORD picture, std::string const& problem) override {
    piece_.clear();
    Send('P', TextOf(picture) + problem);
  }

  // Bytes that follow one another go in one message.
  bool WriteAt(uint64_t place, std::span<BYTE const> bytes) override {
    if (!piece_.empty() && place != piece_place_ + piece_.size()) Flush();
    if (piece_.empty()) piece_place_ = place;
    piece_.insert(piece_.end(), bytes.begin(), bytes.end());
    return piece_.size() < kPieceBytes || Flush();
  }

  // What the parent has to know before the child goes on.
  void SendNow(char type, std::string_view payload) {
    Send(type, payload);
    Pass();
  }
  void SendNumber(char type, size_t number) { SendNow(type, TextOf(static_cast<DWORD>(number))); }

  bool Send(char type, std::string_view payload) {
    Add(type, payload.size());
    waiting_ += payload;
    return waiting_.size() < kPieceBytes ? is_heard_ : Pass();
  }

 private:
  void Add(char type, size_t payload_bytes) {
    waiting_ += type;
    waiting_ += TextOf(static_cast<DWORD>(payload_bytes));
  }

  bool Pass() {
    is_heard_ = is_heard_ && link_.SendText(waiting_);
    waiting_.clear();
    return is_heard_;
  }

  bool Flush() {
    if (piece_.empty()) return is_heard_;
    Add('D', sizeof piece_place_ + piece_.size());
    waiting_.append(reinterpret_cast<char const*>(&piece_place_), sizeof piece_place_);
    waiting_.append(reinterpret_cast<char const*>(piece_.data()), piece_.size());
    piece_.clear();
    return waiting_.size() < kPieceBytes ? is_heard_ : Pass();
  }

  ParentLink& link_;
  std::string waiting_;
  std::vector<BYTE> piece_;
  uint64_t piece_place_ = 0;
  bool is_heard_ = true;
};

void SendChosen(PageSource& source, std::vector<DWORD> const& pages, size_t first, Sender& sender) {
  for (size_t i = first; i < pages.size(); ++i) {
    sender.SendNumber('B', i);
    try {
      source.Read(pages[i], sender);
    } catch (std::bad_alloc const&) {
      sender.Fail(0, kMemoryProblem);
    }
    sender.Send('F', {});
  }
}

// Takes what readers send, one after the other.
class Transfer {
 public:
  Transfer(ReaderWork const& reader, PageTarget& target) : reader_(reader), target_(target) {}

  bool Run(std::string& problem) {
    for (int i = 0; i < kMaxReaders; ++i) {
      rest_.clear();
      auto const take = [this](std::span<BYTE const> bytes) { return Take(bytes); };
      bool const ended = RunChild(reader_(order_), take, problem);
      if (stopped_) return true;
      if (document_problem_) problem = *document_problem_;
      if (document_problem_) return false;
      if (ended && complete_) return true;
      if (ended) problem = kSilentReader;
      if (!reading_) return false;
      target_.Fail((*pages_)[current_], 0, problem);
      EndPage();
    }
    problem =
        "too many pages end their reader; further ones are left out" + std::string(kMendRemedy);
    return false;
  }

 private:
  // False stops the child.
  bool Take(std::span<BYTE const> bytes) {
    rest_.append(reinterpret_cast<char const*>(bytes.data()), bytes.size());
    size_t at = 0;
    while (rest_.size() - at >= kHeadBytes) {
      DWORD size = 0;
      std::memcpy(&size, rest_.data() + at + 1, sizeof size);
      if (rest_.size() - at - kHeadBytes < size) break;
      if (!Handle(rest_[at], std::string_view(rest_).substr(at + kHeadBytes, size))) return false;
      at += kHeadBytes + size;
    }
    rest_.erase(0, at);
    return true;
  }

  bool Handle(char type, std::string_view payload) {
    switch (type) {
      case 'O':
        return TakeOpened(NumberAt(payload, 0));
      case 'B':
        current_ = NumberAt(payload, 0);
        reading_ = current_ < pages_->size();
        return reading_;
      case 'N':
        TakeHead(payload);
        return true;
      case 'D':
        TakeBytes(payload);
        return true;
      case 'E':
        target_.Finish();
        return true;
      case 'P':
        target_.Fail((*pages_)[current_], NumberAt(payload, 0),
                     std::string(Behind(payload, sizeof(DWORD))));
        return true;
      case 'F':
        EndPage();
        return true;
      case 'Z':
        complete_ = true;
        return true;
      default:
        document_problem_ = std::string(payload);
        return true;
    }
  }

  bool TakeOpened(DWORD count) {
    if (pages_) return true;
    order_.count = count;
    pages_ = target_.Choose(count);
    stopped_ = !target_.Start(count);
    return !stopped_;
  }

  // A next reader goes on after the page.
  void EndPage() {
    reading_ = false;
    order_.first = current_ + 1;
    target_.EndPage((*pages_)[current_]);
  }

  void TakeHead(std::string_view payload) {
    PictureHead head;
    head.picture = NumberAt(payload, 0);
    head.width = NumberAt(payload, 1);
    head.height = NumberAt(payload, 2);
    head.depth = static_cast<int>(NumberAt(payload, 3));
    head.dpi = {static_cast<int>(NumberAt(payload, 4)), static_cast<int>(NumberAt(payload, 5))};
    size_t const coding_bytes = NumberAt(payload, 6);
    std::string_view const names = Behind(payload, kHeadNumbers * sizeof(DWORD));
    head.coding = names.substr(0, coding_bytes);
    head.extension = Behind(names, coding_bytes);
    target_.Begin((*pages_)[current_], head);
  }

  void TakeBytes(std::string_view payload) {
    uint64_t place = 0;
    if (payload.size() >= sizeof place) std::memcpy(&place, payload.data(), sizeof place);
    std::string_view const bytes = Behind(payload, sizeof place);
    target_.Write(place, {reinterpret_cast<BYTE const*>(bytes.data()), bytes.size()});
  }

  ReaderWork const& reader_;
  PageTarget& target_;
  ReadOrder order_;  // of the next reader
  std::optional<std::vector<DWORD>> pages_;
  size_t current_ = 0;     // the place of the last page that has begun
  bool reading_ = false;   // it has not ended
  bool stopped_ = false;   // the target wants nothing
  bool complete_ = false;  // the child's final message has come
  std::optional<std::string> document_problem_;
  std::string rest_;
};

}  // namespace

void SendPages(ParentLink& link, OpenSource const& open, PageChoice const& choose,
               ReadOrder const& order) {
  Sender sender(link);
  std::string problem;
  std::string_view reason = kMemoryProblem;
  try {
    auto const source = open(problem);
    if (source != nullptr) {
      DWORD const count = source->PageCount();
      sender.SendNumber('O', count);
      SendChosen(*source, choose(order.count.value_or(count)), order.first, sender);
      sender.SendNow('Z', {});
      return;
    }
    reason = problem;
  } catch (std::bad_alloc const&) {
  }
  sender.SendNow('X', reason);
}

bool TransferPages(ReaderWork const& reader, PageTarget& target, std::string& problem) {
  return Transfer(reader, target).Run(problem);
}

}  // namespace sorrelin::tool
