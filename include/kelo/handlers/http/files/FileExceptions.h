#pragma once

#include <string>

#include "kelo/Exceptions.h"

namespace halvor::kelo {

// The failures of uploads and file lists; their texts reach the client through the frame's 500.

class UnknownFileType : public KeloException {
 public:
  explicit UnknownFileType(const std::string& name) : KeloException("Unknown file type: " + name) {}
};

class UnknownStorageVolume : public KeloException {
 public:
  explicit UnknownStorageVolume(const std::string& name)
      : KeloException("The target storage volume " + name + " is unknown.") {}
};

class VolumeNotMounted : public KeloException {
 public:
  explicit VolumeNotMounted(const std::string& name)
      : KeloException("The storage volume " + name + " is not currently mounted.") {}
};

class FileTypeHasNoStorageVolumes : public KeloException {
 public:
  explicit FileTypeHasNoStorageVolumes(const std::string& name)
      : KeloException("There are no storage volumes associated with the " + name + " file type.") {}
};

}  // namespace halvor::kelo
