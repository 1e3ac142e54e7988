#pragma once

#include <vector>

#include "tavelabi/Resource.h"

namespace halvor::kelo {

// The host's resources of one meter group as read: the group and each of its meters, in the
// group's order.
struct MeterGroupReading {
  tavelabi::Resource group;
  std::vector<tavelabi::Resource> meters;
};

// The host's resources of one meter collection as read: the collection and each of its groups.
struct MeterCollectionReading {
  tavelabi::Resource collection;
  std::vector<MeterGroupReading> groups;
};

}  // namespace halvor::kelo
