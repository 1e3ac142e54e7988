#include "tavelabi/Types.h"

namespace halvor::tavelabi {

const char* toString(CCRUD action) {
  switch (action) {
    case CCRUD::Command:
      return "Command";
    case CCRUD::Create:
      return "Create";
    case CCRUD::Read:
      return "Read";
    case CCRUD::Update:
      return "Update";
    case CCRUD::Delete:
      return "Delete";
    case CCRUD::None:
      return "None";
  }
  return "?";
}

const char* toString(ResourceValueType type) {
  switch (type) {
    case ResourceValueType::UNSPECIFIED_RESOURCE_TYPE:
      return "UNSPECIFIED_RESOURCE_TYPE";
    case ResourceValueType::BOOL:
      return "BOOL";
    case ResourceValueType::FLOAT:
      return "FLOAT";
    case ResourceValueType::DOUBLE:
      return "DOUBLE";
    case ResourceValueType::INT32:
      return "INT32";
    case ResourceValueType::UINT8_ARRAY:
      return "UINT8_ARRAY";
    case ResourceValueType::LIST_VALUE:
      return "LIST_VALUE";
    case ResourceValueType::MAP_VALUE:
      return "MAP_VALUE";
    case ResourceValueType::STRING:
      return "STRING";
  }
  return "?";
}

}  // namespace halvor::tavelabi
