#pragma once

#include <map>
#include <string>

// The constants as another source file of the same program finds them.
const std::string& authorizedStateElsewhere();
const std::string& buttonPressElsewhere();
const std::string& defaultLocaleElsewhere();
const std::map<std::string, std::string>& settingMapElsewhere();
