#include "sim/models/Model.h"

namespace halvor::sim {

Model::~Model() = default;

std::vector<Command> Model::commands() { return {}; }

std::vector<Command> Model::writeChecks() { return {}; }

std::string Model::fixtureSection() const { return {}; }

void Model::applyFixture(const Json::Value& /*section*/) {}

void Model::seed() {}

void Model::tick(const tavelabi::TimePoint& /*now*/) {}

}  // namespace halvor::sim
