// Messages of the child: a letter, the number of bytes that follow (32 bits), and these bytes.
//
//   O  the document is open: its pages (32 bits)
//   B  a page begins: its place in the list of wanted pages (32 bits)
//   F  the form of its picture: width, height, depth, dots per inch (32 bits each), its palette
//   R  rows, whole
//   J  the picture as a JPEG file, in place of F and R
//   E  the picture is complete
//   P  the page cannot be read: why
//   X  the document cannot be read: why
#include "tools/extract/page_transfer.h"

#include <array>
#include <cstring>
#include <new>
#include <optional>

#include "tools/cli/messages.h"
#include "tools/documents/child.h"

namespace sorrelin::tool {
namespace {

constexpr size_t kRowsBytes = size_t{256} << 10;  // rows are sent in messages of about this size
constexpr size_t kHeadBytes = 5;
constexpr size_t kFormNumbers = 5;
constexpr int kMaxReaders = 100;  // of one document, one behind the other

class Sender : public PictureSink {
 public:
  Sender(CHILD_LINK* link, PageTarget const& target) : link_(link), target_(target) {}

  bool Begin(PictureForm const& form) override {
    std::array<DWORD, kFormNumbers> const numbers = {
        form.width, form.height, static_cast<DWORD>(form.depth), static_cast<DWORD>(form.dpi.x),
        static_cast<DWORD>(form.dpi.y)};
    std::string payload(reinterpret_cast<char const*>(numbers.data()), sizeof numbers);
    payload.append(reinterpret_cast<char const*>(form.palette.data()),
                   form.palette.size() * sizeof(RGBQUAD));
    return Send('F', payload);
  }

  bool Row(std::span<BYTE const> row) override {
    rows_.append(reinterpret_cast<char const*>(row.data()), row.size());
    return rows_.size() < kRowsBytes || FlushRows();
  }

  bool TakesJpeg() const override { return target_.TakesJpeg(); }

  void Jpeg(std::span<BYTE const> file) override {
    Send('J', {reinterpret_cast<char const*>(file.data()), file.size()});
  }

  bool FlushRows() {
    bool const sent = rows_.empty() || Send('R', rows_);
    rows_.clear();
    return sent;
  }

  bool SendNumber(char type, size_t number) {
    DWORD const value = static_cast<DWORD>(number);
    return Send(type, {reinterpret_cast<char const*>(&value), sizeof value});
  }

  bool Send(char type, std::string_view payload) {
    DWORD const size = static_cast<DWORD>(payload.size());
    char head[kHeadBytes] = {type};
    std::memcpy(head + 1, &size, sizeof size);
    return SendToParent(link_, head, sizeof head) != FALSE &&
           SendToParent(link_, payload.data(), size) != FALSE;
  }

 private:
  CHILD_LINK* link_;
  PageTarget const& target_;
  std::string rows_;
};

void SendPage(PageSource& source, DWORD page, Sender& sender) {
  std::string problem = kMemoryProblem;
  bool read = false;
  try {
    read = source.Read(page, sender, problem);
  } catch (std::bad_alloc const&) {
  }
  sender.FlushRows();
  if (read) {
    sender.Send('E', {});
  } else {
    sender.Send('P', problem);
  }
}

// One run of a child, both ends of it.
class Transfer {
 public:
  Transfer(std::string const& name, OpenSource open, PageTarget& target)
      : name_(name), open_(open), target_(target) {}

  bool Run(std::string& problem) {
    for (int i = 0; i < kMaxReaders; ++i) {
      rest_.clear();
      auto const work = [this](CHILD_LINK* link) { Work(link); };
      auto const take = [this](std::span<BYTE const> bytes) { return Take(bytes); };
      bool const done = RunChild(work, take, problem);
      if (stopped_) return true;
      if (document_problem_) problem = *document_problem_;
      if (done || document_problem_) return !document_problem_;
      if (!reading_) return false;
      EndPage();
      target_.Fail((*pages_)[current_], problem);
    }
    problem =
        "too many pages end their reader; further ones are left out" + std::string(kMendRemedy);
    return false;
  }

 private:
  // In the child. What the target chooses there, it will choose here.
  void Work(CHILD_LINK* link) {
    Sender sender(link, target_);
    std::string problem = kMemoryProblem;
    try {
      auto const source = open_(name_, problem);
      if (source != nullptr) {
        sender.SendNumber('O', source->PageCount());
        SendPages(*source, sender);
        return;
      }
    } catch (std::bad_alloc const&) {
    }
    sender.Send('X', problem);
  }

  void SendPages(PageSource& source, Sender& sender) {
    auto const pages = pages_ ? *pages_ : target_.Choose(source.PageCount());
    for (size_t i = next_; i < pages.size(); ++i) {
      sender.SendNumber('B', i);
      SendPage(source, pages[i], sender);
    }
  }

  // Here. False stops the child.
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
      case 'F':
        TakeForm(payload);
        return true;
      case 'R':
        TakeRows(payload);
        return true;
      case 'J':
        target_.Jpeg({reinterpret_cast<BYTE const*>(payload.data()), payload.size()});
        wanted_ = true;
        return true;
      case 'E':
        EndPage();
        if (wanted_) target_.Finish((*pages_)[current_]);
        return true;
      case 'P':
        EndPage();
        target_.Fail((*pages_)[current_], std::string(payload));
        return true;
      default:
        document_problem_ = std::string(payload);
        return true;
    }
  }

  bool TakeOpened(DWORD count) {
    if (pages_) return true;
    pages_ = target_.Choose(count);
    stopped_ = !target_.Start(count);
    return !stopped_;
  }

  // A next reader goes on behind the page.
  void EndPage() {
    reading_ = false;
    next_ = current_ + 1;
  }

  static DWORD NumberAt(std::string_view payload, size_t index) {
    DWORD value = 0;
    if (payload.size() >= (index + 1) * sizeof value) {
      std::memcpy(&value, payload.data() + index * sizeof value, sizeof value);
    }
    return value;
  }

  void TakeForm(std::string_view payload) {
    PictureForm form = {
        NumberAt(payload, 0),
        NumberAt(payload, 1),
        static_cast<int>(NumberAt(payload, 2)),
        {},
        {static_cast<int>(NumberAt(payload, 3)), static_cast<int>(NumberAt(payload, 4))}};
    payload.remove_prefix(kFormNumbers * sizeof(DWORD));
    form.palette.resize(payload.size() / sizeof(RGBQUAD));
    if (!payload.empty()) std::memcpy(form.palette.data(), payload.data(), payload.size());
    row_bytes_ = form.RowBytes();
    wanted_ = target_.Begin(form);
    if (!wanted_) target_.Fail((*pages_)[current_], "its picture is too large");
  }

  void TakeRows(std::string_view payload) {
    std::span<BYTE const> const rows(reinterpret_cast<BYTE const*>(payload.data()), payload.size());
    for (size_t at = 0; wanted_ && at + row_bytes_ <= rows.size(); at += row_bytes_) {
      target_.Row(rows.subspan(at, row_bytes_));
    }
  }

  std::string const& name_;
  OpenSource open_;
  PageTarget& target_;
  std::optional<std::vector<DWORD>> pages_;
  size_t current_ = 0;    // the place of the last page that has begun
  bool reading_ = false;  // it has not ended
  bool stopped_ = false;
  std::optional<std::string> document_problem_;
  size_t next_ = 0;
  size_t row_bytes_ = 0;
  bool wanted_ = false;
  std::string rest_;
};

}  // namespace

bool TransferPages(std::string const& name, OpenSource open, PageTarget& target,
                   std::string& problem) {
  return Transfer(name, open, target).Run(problem);
}

}  // namespace sorrelin::tool
