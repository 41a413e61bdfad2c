#ifndef PRODUCT_DAL_DETAIL_CALLS
#define PRODUCT_DAL_DETAIL_CALLS

namespace DeviceAbstractionLayer {
namespace detail {

// Ends the program: somebody called an operation by another one's slot.
void wrongSlot(const char* slot);

}  // namespace detail
}  // namespace DeviceAbstractionLayer

#endif
