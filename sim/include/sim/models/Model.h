#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "sim/CommandTable.h"
#include "tavelabi/Types.h"

namespace halvor::sim {

class SimTavel;

// One domain of the simulated transmitter (meters, alarms, presets, ...): the resources it owns,
// the commands it serves and how its values move. ModelRegistry makes every model and
// SimTavel::installModel puts it to work, in this order: commands(), applyFixture() for each
// fixture that has the model's section (those applied earlier first), seed(); then tick() from
// the host's loop.
//
// Threads: commands run on the caller's thread, concurrently with each other and with tick(),
// which runs on the loop's thread; a model guards whatever state it keeps outside the tree.
// A model that keeps its values in the tree, and reads them back there, needs no lock of its
// own and honours whatever a fixture or a client stored.
class Model {
 public:
  virtual ~Model();

  // A short name for messages, e.g. "demo".
  virtual std::string name() const = 0;
  // The commands the model serves, path -> member (see bind()). Asked once, at installation.
  virtual std::vector<Command> commands();
  // Checks of writes, path -> check, asked once at installation. Before an Update of that path
  // is stored, its check runs on the caller's thread: an empty answer lets the write through, any
  // other answer refuses it (nothing is stored, the caller gets that answer, e.g. one holding
  // "errorMessage", as the transmitter answers a value it cannot take).
  virtual std::vector<Command> writeChecks();
  // The key of a fixture file that holds this model's settings, empty for none.
  virtual std::string fixtureSection() const;
  // The model's section of one fixture, as written there.
  virtual void applyFixture(const Json::Value& section);
  // Creates the model's resources where there are none yet (SimTavel::createIfAbsent), so that
  // resources seeded by fixtures stay as they were seeded.
  virtual void seed();
  // Called on every pass of the host's loop (about 100 a second).
  virtual void tick(const tavelabi::TimePoint& now);

  // Called by SimTavel::installModel before anything else.
  void attach(SimTavel& host) { host_ = &host; }

 protected:
  SimTavel& host() const { return *host_; }

  // A member function of the model as a command handler: {"/x/command/y", bind(&X::y)}.
  template <typename Self>
  CommandHandler bind(tavelabi::Resource (Self::*member)(tavelabi::ResourceAction&)) {
    Self* self = static_cast<Self*>(this);
    return [self, member](tavelabi::ResourceAction& action) { return (self->*member)(action); };
  }

 private:
  SimTavel* host_ = nullptr;
};

}  // namespace halvor::sim
