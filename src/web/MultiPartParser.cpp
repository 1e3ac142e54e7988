#include "kelo/web/MultiPartParser.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

#include "FieldLookup.h"

namespace halvor::kelo::web {
namespace {

std::string_view trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// The value of `attribute` in a header value such as `form-data; name="a"; filename="b"`.
// `found` tells an absent attribute from an empty one.
std::string attributeOf(std::string_view header, std::string_view attribute, bool& found) {
  found = false;
  std::size_t at = header.find(';');
  while (at != std::string_view::npos) {
    std::string_view rest = header.substr(at + 1);
    // Walk to the next ';' that is not inside quotes.
    std::size_t end = 0;
    bool quoted = false;
    for (; end < rest.size(); ++end) {
      if (rest[end] == '"') quoted = !quoted;
      if (rest[end] == ';' && !quoted) break;
    }
    std::string_view pair = trim(rest.substr(0, end));
    std::size_t equals = pair.find('=');
    if (equals != std::string_view::npos &&
        FieldLookup::equalsIgnoreCase(trim(pair.substr(0, equals)), attribute)) {
      std::string_view value = trim(pair.substr(equals + 1));
      if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        value = value.substr(1, value.size() - 2);
      }
      found = true;
      return std::string(value);
    }
    at = end < rest.size() ? at + 1 + end : std::string_view::npos;
  }
  return {};
}

// A body kept in a temporary file is searched through its read-only mapping a window at a
// time, and the pages already searched are given back, so that the search of a large upload
// does not make the whole file resident in the process. The bytes stay in the file (and the
// page cache): a later look at them maps them in again.
constexpr std::size_t kWindow = 4 * 1024 * 1024;

void releasePages(std::string_view body, std::size_t end) {
  static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const auto first = reinterpret_cast<std::uintptr_t>(body.data());
  const std::uintptr_t from = (first + page - 1) / page * page;
  const std::uintptr_t to = (first + end) / page * page;
  if (to > from) ::madvise(reinterpret_cast<void*>(from), to - from, MADV_DONTNEED);
}

std::size_t findReleasing(std::string_view body, std::string_view what, std::size_t from,
                          bool mapped) {
  if (!mapped) return body.find(what, from);
  while (from < body.size()) {
    const std::size_t length = std::min(kWindow + what.size(), body.size() - from);
    const std::size_t found = body.substr(from, length).find(what);
    if (found != std::string_view::npos) return from + found;
    if (from + length >= body.size()) break;
    from += kWindow;
    releasePages(body, from);
  }
  return std::string_view::npos;
}

// Bytes a part's header block may hold before it is taken as malformed.
constexpr std::size_t kMaxHeaderBlock = 64 * 1024;
// Transport padding after a delimiter, before its line break.
constexpr std::size_t kMaxPadding = 1024;
// Memory a part takes beside its names and content.
constexpr std::size_t kPartOverhead = 64;

bool isBlank(std::string_view text) { return trim(text).empty(); }

}  // namespace

MultiPartParser::MultiPartParser() = default;
MultiPartParser::~MultiPartParser() = default;
MultiPartParser::MultiPartParser(MultiPartParser&&) noexcept = default;
MultiPartParser& MultiPartParser::operator=(MultiPartParser&&) noexcept = default;

const std::string& MultiPartParser::getParameter(std::string_view name) const {
  auto it = parameters_.find(std::string(name));
  return it == parameters_.end() ? FieldLookup::empty() : it->second;
}

std::string MultiPartParser::boundaryOf(std::string_view contentType) {
  std::string_view mime = trim(contentType.substr(0, contentType.find(';')));
  if (!FieldLookup::equalsIgnoreCase(mime, "multipart/form-data")) return {};
  bool found = false;
  return attributeOf(contentType, "boundary", found);
}

int MultiPartParser::parse(const HttpRequestPtr& req) {
  parameters_.clear();
  files_.clear();
  if (!req) return -1;
  // A body the server streamed by part was parsed as it arrived.
  if (const std::shared_ptr<const MultiPartParser>& streamed = req->streamedForm()) {
    parameters_ = streamed->parameters_;
    files_ = streamed->files_;
    return streamed->state_ == State::Done ? 0 : -1;
  }
  std::string boundary = boundaryOf(req->getHeader("content-type"));
  if (boundary.empty()) return -1;
  begin(std::move(boundary));
  keepAlive_ = std::static_pointer_cast<const void>(req);
  sourcePath_ = req->bodyFilePath();
  releasePages_ = !sourcePath_.empty();
  std::string_view body = req->body();
  sourceBase_ = body.data();
  (void)feed(body);
  const int result = finish();
  keepAlive_.reset();
  sourcePath_.clear();
  sourceBase_ = nullptr;
  releasePages_ = false;
  return result;
}

void MultiPartParser::begin(std::string boundary, std::unique_ptr<PartStore> store,
                            std::size_t maxFieldBytes) {
  parameters_.clear();
  files_.clear();
  delimiter_ = "--" + boundary;
  separator_ = "\r\n" + delimiter_;
  pending_.clear();
  store_ = std::move(store);
  maxFieldBytes_ = maxFieldBytes;
  fieldBytes_ = 0;
  overLimit_ = false;
  state_ = boundary.empty() ? State::Failed : State::Preamble;
}

// Bytes are worked on where they lie while nothing is pending, so that a body fed whole gives
// views into itself; what cannot be decided yet (a delimiter cut by the end of the piece, a
// header block not complete) waits in `pending_` for the next piece.
bool MultiPartParser::feed(std::string_view bytes) {
  if (state_ == State::Failed) return false;
  if (pending_.empty()) {
    std::size_t used = 0;
    while (used < bytes.size() && state_ != State::Failed) {
      const std::size_t taken = step(bytes.substr(used));
      if (taken == 0) break;
      used += taken;
    }
    if (state_ != State::Failed && state_ != State::Done) pending_.assign(bytes.substr(used));
  } else {
    pending_.append(bytes);
    std::size_t used = 0;
    while (used < pending_.size() && state_ != State::Failed) {
      const std::size_t taken = step(std::string_view(pending_).substr(used));
      if (taken == 0) break;
      used += taken;
    }
    pending_.erase(0, used);
  }
  if (state_ == State::Done || state_ == State::Failed) pending_.clear();
  return state_ != State::Failed;
}

int MultiPartParser::finish() {
  pending_.clear();
  const bool done = state_ == State::Done;
  if (!done) state_ = State::Failed;
  store_.reset();  // an open part is dropped with the store
  field_.clear();
  view_ = {};
  copy_.reset();
  return done ? 0 : -1;
}

// One step of the state machine on the undecided bytes `in`: the number of bytes it used, 0
// when it needs more.
std::size_t MultiPartParser::step(std::string_view in) {
  switch (state_) {
    case State::Preamble:
      return findPreamble(in);
    case State::AfterDelimiter:
      return readDelimiterEnd(in);
    case State::Headers:
      return readHeaders(in);
    case State::Content:
      return readContent(in);
    case State::Done:
      return in.size();  // the epilogue is ignored
    case State::Failed:
      break;
  }
  return 0;
}

// Anything before the first delimiter is ignored; its last bytes may begin one.
std::size_t MultiPartParser::findPreamble(std::string_view in) {
  const std::size_t at = in.find(delimiter_);
  if (at != std::string_view::npos) {
    state_ = State::AfterDelimiter;
    return at + delimiter_.size();
  }
  return in.size() >= delimiter_.size() ? in.size() - (delimiter_.size() - 1) : 0;
}

// "--" closes the body; otherwise blank padding and a line break lead to the part's headers.
std::size_t MultiPartParser::readDelimiterEnd(std::string_view in) {
  if (in.size() < 2) return 0;
  if (in.substr(0, 2) == "--") {
    state_ = State::Done;
    return in.size();
  }
  const std::size_t lineEnd = in.find("\r\n");
  if (lineEnd == std::string_view::npos) {
    // Only blanks (and a line break's CR at the very end) may still come before it.
    std::string_view padding = in.back() == '\r' ? in.substr(0, in.size() - 1) : in;
    if (!isBlank(padding) || in.size() > kMaxPadding) fail();
    return 0;
  }
  if (!isBlank(in.substr(0, lineEnd))) {
    fail();
    return 0;
  }
  state_ = State::Headers;
  return lineEnd + 2;
}

// The header block ends with an empty line, which must come before the next delimiter.
std::size_t MultiPartParser::readHeaders(std::string_view in) {
  // A part without any header field has no Content-Disposition.
  if (in.substr(0, 2) == "\r\n") return fail(), 0;
  const std::size_t end = in.find("\r\n\r\n");
  const std::size_t next = in.find(separator_);
  if (next != std::string_view::npos && (end == std::string_view::npos || next < end + 4)) {
    return fail(), 0;
  }
  if (end == std::string_view::npos) {
    if (in.size() > kMaxHeaderBlock) fail();
    return 0;
  }
  // A delimiter may still begin inside the empty line (its line break being the empty line's
  // second one): that is only known once the bytes it would take are there.
  if (next == std::string_view::npos && in.size() < end + 3 + separator_.size()) return 0;
  if (!startPart(in.substr(0, end))) return 0;
  state_ = State::Content;
  return end + 4;
}

// Content up to the next separator; what may be the start of one waits for more bytes.
std::size_t MultiPartParser::readContent(std::string_view in) {
  const std::size_t next = findReleasing(in, separator_, 0, releasePages_);
  if (next != std::string_view::npos) {
    if (!addContent(in.substr(0, next)) || !endPart()) return 0;
    state_ = State::AfterDelimiter;
    return next + separator_.size();
  }
  if (in.size() < separator_.size()) return 0;
  const std::size_t sure = in.size() - (separator_.size() - 1);
  if (!addContent(in.substr(0, sure))) return 0;
  return sure;
}

bool MultiPartParser::startPart(std::string_view headers) {
  std::string disposition;
  partType_.clear();
  while (!headers.empty()) {
    std::size_t end = headers.find("\r\n");
    std::string_view line = headers.substr(0, end);
    headers = end == std::string_view::npos ? std::string_view() : headers.substr(end + 2);
    std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return fail();
    std::string_view name = trim(line.substr(0, colon));
    std::string_view value = trim(line.substr(colon + 1));
    if (FieldLookup::equalsIgnoreCase(name, "content-disposition")) disposition = value;
    if (FieldLookup::equalsIgnoreCase(name, "content-type")) partType_ = value;
  }
  if (disposition.empty()) return fail();
  bool hasName = false;
  itemName_ = attributeOf(disposition, "name", hasName);
  if (!hasName) return fail();
  fileName_ = attributeOf(disposition, "filename", isFile_);
  field_.clear();
  view_ = {};
  copy_.reset();
  // What a part keeps in memory beside its content counts as well, so that a body of many
  // tiny parts cannot grow without bound.
  if (!countFieldBytes(kPartOverhead + itemName_.size() + fileName_.size())) return false;
  if (isFile_ && store_ && !store_->open()) return fail(true);
  return true;
}

bool MultiPartParser::addContent(std::string_view bytes) {
  if (!isFile_) return countFieldBytes(bytes.size()) && (field_.append(bytes), true);
  if (store_) return store_->write(bytes) || fail(true);
  if (bytes.empty()) return true;
  // A view while the content comes in one piece of a body that the request keeps alive (a
  // whole body is fed at once), else a copy: pieces fed one by one do not outlive the call.
  if (!copy_ && keepAlive_ && (view_.empty() || view_.data() + view_.size() == bytes.data())) {
    view_ = view_.empty() ? bytes : std::string_view(view_.data(), view_.size() + bytes.size());
    return true;
  }
  if (!copy_) copy_ = std::make_shared<std::string>(view_);
  copy_->append(bytes);
  return true;
}

bool MultiPartParser::endPart() {
  if (!isFile_) {
    parameters_[itemName_] = std::move(field_);
    field_.clear();
    return true;
  }
  if (store_) {
    std::shared_ptr<const HttpFile::Spool> spool = store_->close();
    if (!spool) return fail(true);
    files_.emplace_back(std::move(itemName_), std::move(fileName_), std::move(partType_),
                        std::move(spool));
    return true;
  }
  if (copy_) {
    files_.emplace_back(std::move(itemName_), std::move(fileName_), std::move(partType_),
                        std::string_view(*copy_), std::static_pointer_cast<const void>(copy_));
    copy_.reset();
    return true;
  }
  files_.emplace_back(std::move(itemName_), std::move(fileName_), std::move(partType_), view_,
                      keepAlive_);
  // The content is a view into a mapped body file: the same bytes lie in the file.
  if (!sourcePath_.empty() && !view_.empty()) {
    files_.back().setSourceFile(sourcePath_, static_cast<std::size_t>(view_.data() - sourceBase_));
  }
  view_ = {};
  return true;
}

bool MultiPartParser::countFieldBytes(std::size_t bytes) {
  fieldBytes_ += bytes;
  if (maxFieldBytes_ != 0 && fieldBytes_ > maxFieldBytes_) return fail(true);
  return true;
}

bool MultiPartParser::fail(bool overLimit) {
  state_ = State::Failed;
  overLimit_ = overLimit_ || overLimit;
  return false;
}

}  // namespace halvor::kelo::web
