#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "DiskBudget.h"
#include "kelo/web/MultiPartParser.h"

namespace halvor::kelo::web {

// Writes each file part of a multipart body streamed by part to a temporary file of its own,
// in `directory` when it can (the file system of the part's final place), else in
// `fallbackDirectory` (where body files go). All parts of one body together may hold
// `maxBytes`, and take their bytes from the server's disk budget through `lease`. A part not
// complete when the spool goes is removed; complete ones live as long as their HttpFile.
class PartSpool : public MultiPartParser::PartStore {
 public:
  PartSpool(std::string directory, std::string fallbackDirectory,
            std::shared_ptr<DiskBudget::Lease> lease, std::uint64_t maxBytes);
  ~PartSpool() override;
  PartSpool(const PartSpool&) = delete;
  PartSpool& operator=(const PartSpool&) = delete;

  bool open() override;
  bool write(std::string_view bytes) override;
  std::shared_ptr<const HttpFile::Spool> close() override;

 private:
  bool openIn(const std::string& directory);
  void discard();

  std::string directory_;
  std::string fallbackDirectory_;
  std::shared_ptr<DiskBudget::Lease> lease_;
  std::uint64_t maxBytes_;
  std::uint64_t total_ = 0;
  int descriptor_ = -1;
  std::string path_;
  std::uint64_t length_ = 0;
};

}  // namespace halvor::kelo::web
