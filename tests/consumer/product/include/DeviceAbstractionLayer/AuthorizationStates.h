#ifndef PRODUCT_DAL_AUTHORIZATIONSTATES
#define PRODUCT_DAL_AUTHORIZATIONSTATES

#include <string>

namespace DeviceAbstractionLayer {

static const std::string AUTHORIZED_STATE("AUTHORIZED");
static const std::string UNAUTHORIZED_STATE("UNAUTHORIZED");
static const std::string PREVIEW_MODE_AUTHORIZED_STATE("PREVIEW_MODE_AUTHORIZED");

}  // namespace DeviceAbstractionLayer

#endif
