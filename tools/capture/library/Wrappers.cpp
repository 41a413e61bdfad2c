// What stands in the way of every exported function, made from the one list of operations.
//
// The exported names lead to stubs, which the build makes of the names that this file refers to (Stubs.cmake); a stub jumps
// to where its entry in a table points. The linker therefore knows which stub an operation of the list is, by the address
// that its member pointer has here.
//
// Arguments go on as they came: what is not copied by its bytes is, in the calling convention of both processors, the address
// of the caller's copy, and that address goes on. So no text is copied or moved on its way through here.

#include <DeviceAbstractionLayer/AppMessaging.h>
#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/CommsManager.h>
#include <DeviceAbstractionLayer/DeviceCapabilities.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <DeviceAbstractionLayer/GUIOutput.h>
#include <DeviceAbstractionLayer/OOBE.h>
#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <deque>
#include <new>
#include <typeinfo>
#include <utility>

#include "Calls.h"

extern "C" {
extern void* vornCaptureTargets[];            ///< Where the stubs jump to.
extern const char* const vornCaptureNames[];  ///< Their mangled names.
extern const unsigned long vornCaptureCount;
extern const char vornCaptureStubs[];  ///< The first of them; each takes kStubSize.
}

namespace vorn_capture {

namespace {

using VornDeviceAbstractionLayer::VornDALImplIF;
using VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl;
using VornDeviceAbstractionLayer::VornEMPAdapterIF;
typedef VornDeviceAbstractionLayer::VornAttachmentReaderContainerInterfaceImpl Container;
using vorn_testing::Direction;
using vorn_testing::Operation;

constexpr std::size_t kStubSize = 16;
constexpr char kLibrary[] = "libVornDALImpl.so";
constexpr char kAssistant[] = "libDALIMPL.so";

[[noreturn]] void give(const char* text, const char* name) {
  const std::string line = std::string("libvorn-capture.so: ") + text + name + "\n";
  static_cast<void>(!write(STDERR_FILENO, line.data(), line.size()));
  std::abort();
}

/// The function that would have been called without the capture.
void* realOf(const Function& function) {
  if (void* const known = function.real.load(std::memory_order_relaxed)) return known;
  void* real = dlsym(RTLD_NEXT, function.symbol);
  if (!real) {
    // Loaded for its caller alone. From here on it stays loaded.
    const bool assistant = std::strncmp(function.symbol, "_ZN22", 5) == 0;
    if (void* const library = dlopen(assistant ? kAssistant : kLibrary, RTLD_LAZY | RTLD_NOLOAD))
      real = dlsym(library, function.symbol);
  }
  if (!real) give("no loaded library has ", function.symbol);
  function.real = real;
  return real;
}

// How arguments travel.

template <class Value>
using Passed = std::conditional_t<std::is_reference_v<Value> || (std::is_trivially_copyable_v<Value> &&
                                                                 std::is_trivially_destructible_v<Value>),
                                  Value, Value&>;

/// What stands for a host: every slot leads to the host's own, and its time is told.
struct Front {
  const void* table;
  void* inner;
  Front* next;
};

std::atomic<Front*> fronts{nullptr};
void* hostTable[80];
void* playerTable[40];
constexpr std::size_t kFirstSlot = 2;  // Behind the offset and the type, slots are counted from 1.

VornDALImplIF& frontOf(VornDALImplIF& host) {
  Front* known = fronts.load(std::memory_order_acquire);
  for (Front* front = known; front; front = front->next) {
    if (front->inner == &host || front == static_cast<void*>(&host))
      return *reinterpret_cast<VornDALImplIF*>(front);
  }
  Front* const made = new (std::nothrow) Front{hostTable + kFirstSlot, &host, known};
  if (!made) return host;
  while (!fronts.compare_exchange_weak(made->next, made)) {
  }
  return *reinterpret_cast<VornDALImplIF*>(made);
}

/// What goes on to the library in the place of an argument.
template <class Value>
Passed<Value> onward(const Function& function, Passed<Value> value) {
  if constexpr (std::is_same_v<Value, VornDALImplIF&>) {
    *function.fronted = true;
    return frontOf(value);
  } else {
    static_cast<void>(function);
    return static_cast<Passed<Value>>(value);
  }
}

// Containers: what they are sent comes through their table, which is inside the library.

void* containerTable[6];
void* containerStubs[2];
const Function* containerFunctions[2];

void adopt(Container* container) {
  if (!container) return;
  void**& table = *reinterpret_cast<void***>(container);
  if (table[2] != realOf(*containerFunctions[0]) || table[3] != realOf(*containerFunctions[1]))
    return;  // The program's own class.
  static const bool made = [&] {
    std::copy(table - 2, table + 4, containerTable);
    containerTable[4] = containerStubs[0];
    containerTable[5] = containerStubs[1];
    return true;
  }();
  static_cast<void>(made);
  table = containerTable + 2;
}

// The call itself.

template <class Value>
constexpr bool isWritten = std::is_same_v<Value, std::string&> || std::is_same_v<Value, std::int64_t&>;

template <class... P, std::size_t... I>
void watch(Frame& frame, std::index_sequence<I...>, Passed<P>... arguments) {
  [[maybe_unused]] const auto one = [&frame](std::size_t index, auto written, const auto& argument) {
    if constexpr (decltype(written)::value)
      frame.watch(index, argument);
    else
      static_cast<void>(index);
  };
  (one(I, std::bool_constant<isWritten<P>>(), arguments), ...);
}

/// Runs a call and tells what it answered, which is made where the caller wants it: nothing stands between.
template <class Result, class Call>
Result answered(Frame& frame, Call call) {
  Result result = call();
  if constexpr (std::is_same_v<Result, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>>)
    frame.reach(result ? Reached::kYes : Reached::kNo);
  frame.returned(told(result), room(told(result)));
  return result;
}

/// Runs a call that was begun, and tells how it ended.
template <class Result, class Call>
Result run(Frame& frame, Call call) {
  try {
    if constexpr (std::is_void_v<Result>) {
      call();
      frame.returned();
    } else {
      return answered<Result>(frame, call);
    }
  } catch (const std::exception& error) {
    frame.threw(error.what());
    throw;
  } catch (...) {
    frame.threw("no std::exception");
    throw;
  }
}

template <class Result, class... P, class Call>
Result record(const Function& function, Call call, Passed<P>... arguments) {
  Frame frame(function, false);
  watch<P...>(frame, std::index_sequence_for<P...>(), arguments...);
  frame.begin(told(arguments)...);
  return run<Result>(frame, call);
}

/// A member function that was called by its name.
template <class Result, class... P>
struct MemberCall {
  static Result around(const Function& function, void* self, Passed<P>... arguments) {
    const auto real = reinterpret_cast<Result (*)(void*, Passed<P>...)>(realOf(function));
    const auto call = [&]() -> Result { return real(self, onward<P>(function, arguments)...); };
    if (!isRecording()) return call();
    return record<Result, P...>(function, call, arguments...);
  }
};

/// Audio, which is not told call by call.
template <>
struct MemberCall<void, std::vector<short>&> {
  static void around(const Function& function, void* self, std::vector<short>& samples) {
    const auto real = reinterpret_cast<void (*)(void*, std::vector<short>&)>(realOf(function));
    if (!isRecording()) return real(self, samples);
    const Frame frame(function, false);  // What it calls runs inside it.
    tellSound(samples);
    real(self, samples);
  }
};

/// A static function.
template <class Result, class... P>
struct StaticCall {
  static Result around(const Function& function, Passed<P>... arguments) {
    const auto real = reinterpret_cast<Result (*)(Passed<P>...)>(realOf(function));
    const auto call = [&]() -> Result { return real(onward<P>(function, arguments)...); };
    if (!isRecording()) return call();
    return record<Result, P...>(function, call, arguments...);
  }
};

/// A constructor, which returns nothing.
template <class Adapter, class... P>
struct ConstructorCall {
  static void around(const Function& function, void* self, Passed<P>... arguments) {
    MemberCall<void, P...>::around(function, self, arguments...);
    if constexpr (std::is_same_v<Adapter, Container>) adopt(static_cast<Container*>(self));
  }
};

/// The maker of containers.
struct ContainerCall {
  typedef std::shared_ptr<Container> Result;
  typedef std::function<void(std::string)> Callback;

  static Result around(const Function& function, void* self, Callback& onClose) {
    Result made = MemberCall<Result, Callback>::around(function, self, onClose);
    adopt(made.get());
    return made;
  }
};

/// How long the other side takes.
class Visit {
 public:
  explicit Visit(Frame& frame) : m_frame(frame) { frame.arrive(now()); }
  ~Visit() { m_frame.leave(); }

  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;

 private:
  Frame& m_frame;
};

Frame* openFrame() {
  if (!isRecording()) return nullptr;
  Thread* const thread = thisThread();
  return thread ? thread->innermost : nullptr;
}

template <class Result, class... P>
Result atSlot(const Function& function, void* inner, Passed<P>... arguments) {
  void** const table = *static_cast<void***>(inner);
  return reinterpret_cast<Result (*)(void*, Passed<P>...)>(table[function.operation.slot - 1])(inner,
                                                                                               arguments...);
}

/// A slot of the host, called by the library.
template <class Result, class... P>
struct SlotCall {
  static Result around(const Function& function, void* self, Passed<P>... arguments) {
    void* const inner = static_cast<Front*>(self)->inner;
    Frame* const open = openFrame();
    if (!open) return atSlot<Result, P...>(function, inner, arguments...);
    if (&open->function() == &function && !open->hasArrived()) {
      const Visit visit(*open);
      return atSlot<Result, P...>(function, inner, arguments...);
    }
    // No adapter's function of this name is open: the library calls the host by itself.
    if (open->function().operation.direction == Direction::kUp) open->leave();
    return alone(function, inner, *open, arguments...);
  }

 private:
  static Result alone(const Function& function, void* inner, Frame& open, Passed<P>... arguments) {
    Frame frame(function, true);
    if constexpr (std::is_same_v<Result, VornEMPAdapterIF*>) frame.changePlaces();
    watch<P...>(frame, std::index_sequence_for<P...>(), arguments...);
    frame.begin(told(arguments)...);
    frame.arrive(frame.time());
    const auto call = [&]() -> Result { return atSlot<Result, P...>(function, inner, arguments...); };
    if constexpr (std::is_same_v<Result, VornEMPAdapterIF*>) {
      const Result player = run<Result>(frame, call);
      if (!player) return player;
      open.player() = {playerTable + kFirstSlot, player, &open};
      return reinterpret_cast<Result>(&open.player());
    } else {
      static_cast<void>(open);
      return run<Result>(frame, call);
    }
  }
};

/// A slot of an external player, called by the library.
template <class Result, class... P>
struct PlayerCall {
  static Result around(const Function& function, void* self, Passed<P>... arguments) {
    const PlayerFront& front = *static_cast<PlayerFront*>(self);
    const Visit visit(*front.frame);
    return atSlot<Result, P...>(function, front.inner, arguments...);
  }
};

/// getInstance() of the assistant side: when it is called, and whether there is one.
template <class Result>
struct AssistantCall {
  static Result around(const Function& function) {
    const auto real = reinterpret_cast<Result (*)()>(realOf(function));
    Frame* const open = openFrame();
    if (!open || open->function().operation.direction != Direction::kUp || open->hasArrived()) return real();
    open->lock(now());
    Result found = real();
    open->arrive(now());
    open->reach(found ? Reached::kYes : Reached::kNo);
    return found;
  }
};

// Functions by the hundred: a row of them for each form that calls have, each with the operation that it stands for.

template <class Call, class Result, class... A>
class Row {
 public:
  static void* next(const Function& function) {
    static std::size_t used = 0;
    if (used == kMost) give("too many operations of one form: ", function.operation.name);
    operations[used] = &function;
    return entries(std::make_index_sequence<kMost>())[used++];
  }

 private:
  static constexpr std::size_t kMost = 24;

  template <std::size_t I>
  static Result entry(A... arguments) {
    return Call::around(*operations[I], static_cast<A>(arguments)...);
  }

  template <std::size_t... I>
  static void* const* entries(std::index_sequence<I...>) {
    static void* const all[] = {reinterpret_cast<void*>(&entry<I>)...};
    return all;
  }

  static inline const Function* operations[kMost];
};

// From the first call, which may come before this library's own constructors, to the very end of the process.
std::deque<Function>& functions() {
  static auto& all = *new std::deque<Function>;
  return all;
}

/// Whether the host of an adapter was seen to be handed over.
std::atomic<bool>* frontedOf(const char* adapter) {
  static auto& all = *new std::deque<std::pair<std::string, std::atomic<bool>>>;
  for (auto& [name, fronted] : all) {
    if (name == adapter) return &fronted;
  }
  return &all.emplace_back(adapter, false).second;
}

/// Goes through the list and wires every stub and every slot.
struct Wiring : vorn_testing::OperationVisitor {
  std::vector<void*> entries = std::vector<void*>(vornCaptureCount);

  template <class OfHost, class OfAdapter>
  void down(const Operation& operation, OfHost host, OfAdapter adapter) {
    const Function& function = add(operation);
    member(function, adapter);
    slot(function, host);
  }

  template <class OfHost>
  void hostOnly(const Operation& operation, OfHost host) {
    slot(add(operation), host);
  }

  template <class OfAdapter>
  void up(const Operation& operation, OfAdapter adapter) {
    member(add(operation), adapter);
  }

  template <class OfClass>
  void own(const Operation& operation, OfClass of) {
    member(add(operation), of);
  }

  template <class Result, class... P>
  void life(const Operation& operation, Result (*function)(P...)) {
    Function& added = add(operation);
    wire(added, stubAt(reinterpret_cast<std::uintptr_t>(function), operation.name),
         Row<StaticCall<Result, P...>, Result, Passed<P>...>::next(added));
  }

  template <class Adapter, class... P>
  void constructor(const Operation& operation, vorn_testing::Constructor<Adapter, P...>) {
    for (const char* kind : {"C1", "C2"}) {
      Function& added = add(operation);
      wire(added, stubNamed(nested(operation.adapter) + kind),
           Row<ConstructorCall<Adapter, P...>, void, void*, Passed<P>...>::next(added));
    }
  }

  /// The assistant side's classes, which the list knows by their names alone.
  template <class Class>
  void assistant(const char* name) {
    const Operation operation = {name, "getInstance", Direction::kLife, vorn_testing::Guard::kUnlocked, "", 0,
                                 ""};
    Function& added = add(operation);
    typedef std::shared_ptr<Class> Result;
    wire(added, stubAt(reinterpret_cast<std::uintptr_t>(&Class::getInstance), name),
         Row<AssistantCall<Result>, Result>::next(added));
  }

 private:
  Function& add(const Operation& operation) {
    Function& added = functions().emplace_back();
    added.operation = operation;
    added.index = static_cast<std::uint32_t>(functions().size() - 1);
    std::size_t i = 0;
    for (const std::string& name : vorn_testing::parameterNames(operation))
      added.parameters.at(i++) = parameterName(name);
    added.fronted = frontedOf(operation.adapter);
    return added;
  }

  static std::string nested(const char* name) {
    return "_ZN26VornDeviceAbstractionLayer" + std::to_string(std::strlen(name)) + name;
  }

  template <class Result, class Class, class... P>
  void member(const Function& function, Result (Class::*of)(P...)) {
    std::uintptr_t words[2];
    static_assert(sizeof of == sizeof words);
    std::memcpy(words, &of, sizeof of);
#if defined(__aarch64__)
    const bool isVirtual = words[1] & 1;
#else
    const bool isVirtual = words[0] & 1;
#endif
    const Operation& operation = function.operation;
    const std::size_t stub = isVirtual
                                 ? stubNamed(nested(operation.adapter) +
                                             std::to_string(std::strlen(operation.name)) + operation.name)
                                 : stubAt(words[0], operation.name);
    typedef std::conditional_t<std::is_same_v<Result, std::shared_ptr<Container>>, ContainerCall,
                               MemberCall<Result, P...>>
        Call;
    wire(functions()[function.index], stub, Row<Call, Result, void*, Passed<P>...>::next(function));
    if (isVirtual) {
      const std::size_t which = std::strcmp(operation.name, "sendData") == 0 ? 0 : 1;
      containerStubs[which] = const_cast<char*>(vornCaptureStubs) + stub * kStubSize;
      containerFunctions[which] = &function;
    }
  }

  template <class Result, class... P>
  void slot(const Function& function, Result (VornDALImplIF::*)(P...)) {
    hostTable[kFirstSlot + static_cast<std::size_t>(function.operation.slot) - 1] =
        Row<SlotCall<Result, P...>, Result, void*, Passed<P>...>::next(function);
  }

  template <class Result, class... P>
  void slot(const Function& function, Result (VornEMPAdapterIF::*)(P...)) {
    playerTable[kFirstSlot + static_cast<std::size_t>(function.operation.slot) - 1] =
        Row<PlayerCall<Result, P...>, Result, void*, Passed<P>...>::next(function);
  }

  static std::size_t stubAt(std::uintptr_t address, const char* name) {
    const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(vornCaptureStubs);
    const std::size_t stub = (address - first) / kStubSize;
    if (address < first || stub >= vornCaptureCount) give("no stub for ", name);
    return stub;
  }

  static std::size_t stubNamed(const std::string& prefix) {
    for (std::size_t i = 0; i < vornCaptureCount; ++i) {
      if (std::strncmp(vornCaptureNames[i], prefix.c_str(), prefix.size()) == 0) return i;
    }
    give("no stub for ", prefix.c_str());
  }

  void wire(Function& function, std::size_t stub, void* entry) {
    function.symbol = vornCaptureNames[stub];
    function.real = dlsym(RTLD_NEXT, function.symbol);
    entries.at(stub) = entry;
  }
};

/// What no pointer names, so that it is referred to here: constructors, and what is called through a table. Never run.
void* volatile nowhere = nullptr;

struct References : vorn_testing::OperationVisitor {
  template <class Adapter, class... P>
  void constructor(const Operation&, vorn_testing::Constructor<Adapter, P...>) {
    if (void* const place = nowhere) new (place) Adapter(*static_cast<std::remove_reference_t<P>*>(place)...);
  }

  void container() {
    if (void* const place = nowhere) {
      static_cast<Container*>(place)->Container::sendData(nullptr, 0);
      static_cast<Container*>(place)->Container::notifyEndOfStream();
    }
  }
};

}  // namespace

const Function& functionAt(std::uint32_t index) { return functions()[index]; }

void wrap() {
  hostTable[1] = const_cast<std::type_info*>(&typeid(VornDALImplIF));
  playerTable[1] = const_cast<std::type_info*>(&typeid(VornEMPAdapterIF));
  References references;
  vorn_testing::visitOperations(references);
  references.container();
  Wiring wiring;
  vorn_testing::visitOperations(wiring);
  wiring.assistant<DeviceAbstractionLayer::AppMessaging>("AppMessaging");
  wiring.assistant<DeviceAbstractionLayer::AudioIn>("AudioIn");
  wiring.assistant<DeviceAbstractionLayer::CommsManager>("CommsManager");
  wiring.assistant<DeviceAbstractionLayer::DeviceCapabilities>("DeviceCapabilities");
  wiring.assistant<DeviceAbstractionLayer::DeviceInfo>("DeviceInfo");
  wiring.assistant<DeviceAbstractionLayer::GUIOutput>("GUIOutput");
  wiring.assistant<DeviceAbstractionLayer::OOBE>("OOBE");
  for (std::size_t i = 0; i < vornCaptureCount; ++i) {
    if (!wiring.entries[i]) give("not in the list of operations: ", vornCaptureNames[i]);
    __atomic_store_n(&vornCaptureTargets[i], wiring.entries[i], __ATOMIC_RELEASE);
  }
}

}  // namespace vorn_capture
