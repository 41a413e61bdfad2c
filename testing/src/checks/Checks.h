#pragma once

#include <vector>

#include "Operations.h"
#include "Trial.h"

namespace vorn_testing::checks {

using Checks = std::vector<Check>;

/// The operation of VornDALImplIF in that slot.
const Operation& hostOperation(int slot);

/// A check of one operation; its id ends with `name`.
Check checkOf(const Operation& operation, const std::string& name, const std::string& rule,
              const std::string& remedy, std::function<void(Trial&)> run);

/// What every operation promises, whatever it is for.
void addCallChecks(Checks& checks);
/// That the store keeps what it is given: slots 25 to 29.
void addStoreChecks(Checks& checks);
/// That what its operations answer is so.
void addStoreAnswerChecks(Checks& checks);
/// That it outlives its process.
void addDurabilityChecks(Checks& checks);
/// That settings are what they were set to.
void addSettingChecks(Checks& checks);
/// The same for volume and mute.
void addVolumeChecks(Checks& checks);
/// That there is a player, and that the host can be destroyed.
void addLifeChecks(Checks& checks);
/// That the media players which the host brings can be configured.
void addMediaPlayerChecks(Checks& checks);

/// What calls leave behind.
void addLeftChecks(Checks& checks);
/// What goes upward: that the assistant side may ask back, and sound.
void addUpwardChecks(Checks& checks);
/// That news are true.
void addNewsChecks(Checks& checks);
/// That asking changes nothing, and that answers agree.
void addGetterChecks(Checks& checks);

/// What is about all operations together, under the name "host".
void addHostChecks(Checks& checks);

/// A check of the host as a whole.
Check checkOfHost(const std::string& name, const std::string& rule, const std::string& remedy,
                  std::function<void(Trial&)> run);

/// The area that an operation belongs to, by its name; empty for none.
std::string areaOf(const std::string& operation);
const std::vector<std::string>& areas();

}  // namespace vorn_testing::checks
