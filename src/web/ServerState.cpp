#include "ServerState.h"

namespace halvor::kelo::web {

void ServerState::applyCreationAdvices(const HttpResponsePtr& response) const {
  if (!response || response->creationAdviceApplied()) return;
  response->setCreationAdviceApplied();
  for (const auto& advice : creationAdvices) advice(response);
}

}  // namespace halvor::kelo::web
