#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "language/Scenario.h"

namespace vorn_speaker {

/// Writes down what it is asked for.
class Script : public Stage {
 public:
  void section(const std::string& title) override { note("section " + title); }
  void call(Caller caller, const std::string& name, const BoundCall&, int threads) override {
    note((caller == Caller::kAssistant ? "assistant " : "firmware ") + name + " " + std::to_string(threads));
  }
  void expectResult(const std::string& expected) override { note("result " + expected); }
  void expectCall(const ExpectedCall& expected) override {
    std::string line = (expected.wanted ? "call " : "no call ") + expected.name;
    for (const Token& argument : expected.arguments) line += " <" + argument.text + ">";
    note(line + " " + std::to_string(expected.within.count()));
  }
  void expectHeard(std::optional<std::int64_t> samples, std::chrono::milliseconds within) override {
    note("heard " + (samples ? std::to_string(*samples) : "some") + " " + std::to_string(within.count()));
  }
  void expectTrace(const std::string& part) override { note("trace " + part); }
  void expectEveryOperation() override { note("every"); }
  void assistantSide(bool present, const std::string& area) override {
    note((present ? "create " : "remove ") + area);
  }
  void answer(const std::string& question, const std::string& value) override {
    note("answer " + question + " " + value);
  }
  void waitForMicrophone() override { note("microphone"); }
  void adapters(bool create) override { note(create ? "create adapters" : "shut adapters down"); }
  void traceFile(bool writable) override { note(writable ? "trace writable" : "trace not writable"); }
  void delay(const std::string& name, std::chrono::milliseconds time) override {
    note("delay " + name + " " + std::to_string(time.count()));
  }
  void fail(const std::string& name, const std::string& text) override { note("fail " + name + " " + text); }
  void restore(const std::string& name) override { note("restore " + name); }
  bool isSecret(const std::string&) const override { return false; }

  std::string noted;

 private:
  void note(const std::string& line) { noted = line; }
};

}  // namespace vorn_speaker
