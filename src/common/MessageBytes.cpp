#include "kelo/common/MessageBytes.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

namespace halvor::kelo {

std::string MessageBytes::of(const google::protobuf::MessageLite& message) {
  std::string bytes;
  {
    // The streams give back what they hold in reserve when they go, so bytes is read after.
    google::protobuf::io::StringOutputStream stream(&bytes);
    google::protobuf::io::CodedOutputStream coded(&stream);
    coded.SetSerializationDeterministic(true);
    message.SerializeToCodedStream(&coded);
  }
  return bytes;
}

}  // namespace halvor::kelo
