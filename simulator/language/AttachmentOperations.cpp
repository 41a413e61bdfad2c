// The rows of players and containers, whose calls go through the attachment of the hour.

#include <tuple>
#include <type_traits>
#include <utility>

#include "Bind.h"
#include "device/Attachments.h"

namespace vorn_speaker {

namespace {

/// A row whose call goes through Attachments, with its arguments as texts and flags.
template <class... P, std::size_t... I>
Operation row(Caller caller, const char* adapter, const char* name,
              std::string (Attachments::*function)(P...), const char* target, int slot,
              const std::vector<const char*>& names, std::index_sequence<I...>) {
  Operation made{adapter, name, caller, {}, {}, target, slot};
  (made.parameters.push_back({names.at(I), describe<std::decay_t<P>>(), false, canonical<std::decay_t<P>>}),
   ...);
  made.bind = [function](const std::vector<Token>& arguments) -> BoundCall {
    static_cast<void>(arguments);
    std::tuple<std::decay_t<P>...> values{read<std::decay_t<P>>(arguments[I])...};
    return [function, values](Adapters& adapters) {
      static_cast<void>(values);
      return (adapters.attachments.*function)(std::get<I>(values)...);
    };
  };
  return made;
}

template <class... P>
Operation row(Caller caller, const char* adapter, const char* name,
              std::string (Attachments::*function)(P...), const char* target, int slot,
              const std::vector<const char*>& names = {}) {
  return row(caller, adapter, name, function, target, slot, names, std::index_sequence_for<P...>());
}

}  // namespace

std::vector<Operation> attachmentOperations() {
  return {
      row(Caller::kAssistant, "VornMediaPlayerFactory", "createDalMediaPlayer", &Attachments::createPlayer,
          kMediaPlayer, kConfigure, {"name", "firstFlag", "secondFlag"}),
      row(Caller::kAssistant, kContainerFactory, "createAttachmentReaderContainer",
          &Attachments::createContainer, kContainerFactory, kCreateContainer),
      row(Caller::kFirmware, kContainer, "Subscribe", &Attachments::subscribe, kContainer, kSubscribe,
          {"player"}),
      row(Caller::kAssistant, kContainer, "sendData", &Attachments::sendData, kContainer, kSendData,
          {"file"}),
      row(Caller::kAssistant, kContainer, "notifyEndOfStream", &Attachments::endOfStream, kContainer,
          kEndOfStream),
      row(Caller::kFirmware, kContainer, "GetOnCloseCallbackFunction", &Attachments::close, kContainer,
          kGetOnClose, {"reason"}),
      row(Caller::kFirmware, kContainer, "Unsubscribe", &Attachments::unsubscribe, kContainer, kUnsubscribe),
  };
}

}  // namespace vorn_speaker
