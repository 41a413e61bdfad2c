// Creation, fetching and shutdown, with each thing that can fail in them failing in turn.

#include <iostream>

#include "torture.h"

namespace {

using namespace torture;

/// Keeps what is written to standard error, without an allocation.
class Errors final : public std::streambuf {
 public:
  Errors() : m_before(std::cerr.rdbuf(this)) {}
  ~Errors() override { std::cerr.rdbuf(m_before); }
  std::string text() const { return {m_bytes, m_size}; }

 private:
  int_type overflow(int_type byte) override {
    if (m_size < sizeof m_bytes) m_bytes[m_size++] = static_cast<char>(byte);
    return byte;
  }

  std::streambuf* const m_before;
  char m_bytes[256];
  std::size_t m_size = 0;
};
class TorturedLife : public Torture {
 protected:
  struct Creation {
    const Adapter& life;
    Firmware& firmware;
    std::shared_ptr<void> made;
    void operator()() { made = life.create(firmware); }
  };

  Firmware m_firmware;
};

/// An operation reaches its host exactly while there is an instance.
void expectLive(const Adapter& life, bool live) {
  Firmware firmware;
  const std::shared_ptr<void> object = life.construct(firmware);
  for (const Row& row : rows()) {
    if (row.adapter != &life || row.direction != Direction::kDown) continue;
    row.run(object.get());
    EXPECT_EQ(!firmware.recorder->calls().empty(), live) << row.name() << ", after a failure, has it wrong";
    return;
  }
}

TEST_F(TorturedLife, CreationLeavesNothingBehindWhenItFails) {
  for (const Adapter* const each : classes()) {
    const Adapter& life = *each;
    const bool isLogger = life.name == "FileLogger";
    for (const Logger logger : {Logger::kAbsent, Logger::kOff, Logger::kOn}) {
      if (life.name == "VornAttachmentReaderContainerFactory") continue;  // Made once for all.
      if (isLogger && logger != Logger::kAbsent) continue;
      SCOPED_TRACE(life.name + std::string(", logger ") + std::to_string(static_cast<int>(logger)));
      setLogger(logger);
      life.create(m_firmware).reset();
      life.shutdown();
      if (logger == Logger::kAbsent) FileLogger::Shutdown();
      long living = 0;
      const auto settle = [&] {
        life.shutdown();
        if (logger == Logger::kAbsent) FileLogger::Shutdown();
      };
      const Errors errors;
      bool told = false;
      tryEveryPoint(
          [&] {
            settle();
            auto creation = std::make_unique<Creation>(Creation{life, m_firmware, nullptr});
            living = interposed::living();
            return creation;
          },
          [&](std::unique_ptr<Creation> creation, End end) {
            EXPECT_EQ(end, expected(isLogger));
            const bool made = creation->made != nullptr;
            const bool mayBeEmpty = end != End::kReturned || (isLogger && !interposed::failed().empty());
            EXPECT_TRUE(made || mayBeEmpty);
            if (end != End::kReturned) expectLive(life, false);
            told = told || (isLogger && end == End::kReturned && !made);
            creation->made.reset();
            settle();
            EXPECT_EQ(interposed::living(), living) << "leaked";
            EXPECT_NE(life.create(m_firmware), nullptr);
          });
      if (isLogger) {
        EXPECT_TRUE(told);
        EXPECT_EQ(errors.text().substr(0, 56), "FileLogger initialization failed due to an exception.\nFi");
      }
      settle();
    }
  }
  FileLogger::Shutdown();
  unlink(kPath);
}

TEST_F(TorturedLife, TakesTheMutexOfItsClassOnceForEachStep) {
  FileLogger::CreateInstance(false);
  for (const Adapter* const each : classes()) {
    const Adapter& life = *each;
    SCOPED_TRACE(life.name);
    void* const mutex = mutexOf(life.name).native_handle();
    const bool isFactory = life.name == "VornMediaPlayerFactory";  // Created, then fetched.
    const bool isLogger = life.name == "FileLogger";
    const bool hasNoEnd = life.name == "VornAttachmentReaderContainerFactory";
    life.shutdown();
    interposed::arm();
    const std::shared_ptr<void> made = life.create(m_firmware);
    interposed::disarm();
    EXPECT_EQ(interposed::asked(mutex), isFactory ? 2U : 1U);
    // The object, and its count; the logger's lines have texts as well.
    if (isLogger) {
      EXPECT_EQ(interposed::points(interposed::kAllocation), 2U);
    }
    interposed::arm();
    life.get();
    interposed::disarm();
    EXPECT_EQ(interposed::asked(mutex), 1U);
    interposed::arm();
    life.shutdown();
    interposed::disarm();
    EXPECT_EQ(interposed::asked(mutex), hasNoEnd ? 0U : 1U);
  }
  FileLogger::Shutdown();
  unlink(kPath);
}

TEST_F(TorturedLife, ThatFailsToBeginOrEndLeavesTheInstanceAsItWas) {
  struct Shutdown {
    const Adapter& life;
    void operator()() { life.shutdown(); }
  };
  struct Fetch {
    const Adapter& life;
    void operator()() { life.get(); }
  };
  FileLogger::CreateInstance(true);
  for (const Adapter* const each : classes()) {
    const Adapter& life = *each;
    SCOPED_TRACE(life.name);
    tryEveryPoint(
        [&] {
          life.create(m_firmware);
          return std::make_unique<Fetch>(Fetch{life});
        },
        [&](std::unique_ptr<Fetch>, End end) {
          EXPECT_EQ(end, expected());
          EXPECT_NE(life.get(), nullptr);
        });
    tryEveryPoint(
        [&] {
          life.create(m_firmware);
          return std::make_unique<Shutdown>(Shutdown{life});
        },
        [&](std::unique_ptr<Shutdown>, End end) {
          EXPECT_EQ(end, expected());
          EXPECT_NE(end, End::kReturned) << "a lock that failed went unnoticed";
          EXPECT_NE(life.get(), nullptr) << "a Shutdown() that threw took the instance";
          expectLive(life, true);
        });
    life.shutdown();
  }
  FileLogger::Shutdown();
  unlink(kPath);
}

}  // namespace
