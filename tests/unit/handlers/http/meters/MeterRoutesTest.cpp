#include <gtest/gtest.h>

#include <vector>

#include "kelo/handlers/http/meters/MeterRoutes.h"
#include "kelo/web/HttpAppFramework.h"

namespace halvor::kelo {
namespace {

using HandlerInfo = web::HttpAppFramework::HandlerInfo;

TEST(MeterRoutesTest, RegistersTheThreeMeterRoutesUnderTheVersionPrefix) {
  web::HttpAppFramework application;
  MeterRoutes::registerMeterRoutes(application);
  const std::vector<HandlerInfo> expected = {
      {"/1/api/meters/collections/links", web::Get, "GetMeterCollectionLinks"},
      {"/1/api/meters/collections", web::Get, "GetMeterCollections"},
      {"/1/api/meters/dashboard/available", web::Get, "GetMetersDashboard"},
  };
  EXPECT_EQ(application.getHandlersInfo(), expected);
}

}  // namespace
}  // namespace halvor::kelo
