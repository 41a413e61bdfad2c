#include "Recording.h"

#include <vorn_testing/Text.h>

#include <algorithm>
#include <charconv>
#include <ostream>
#include <stdexcept>

#include "Format.h"
#include "text/Files.h"
#include "text/Lines.h"

namespace vorn_speaker {

namespace {

/// Whether it bears the name of an operation that takes secrets, and another's place: which of its arguments they are is
/// then not known.
bool isMisplaced(const Crossing& call) {
  const Operation* const named = operationNamed(call.fullName());
  if (!named) return false;
  const std::vector<std::string> names = parameterNames(*named);
  const Operation* const there = operationAt(call.target, call.slot);
  return std::any_of(names.begin(), names.end(), isSecretName) &&
         (!there || there->fullName() != named->fullName());
}

void hide(Crossing& call) {
  for (std::vector<std::string>* const texts : {&call.arguments, &call.spelled, &call.written})
    std::fill(texts->begin(), texts->end(), kMask);
  for (std::string* const text : {&call.result, &call.exception}) {
    if (!text->empty()) *text = kMask;
  }
}

/// The path, unless something stands there that is not ours to replace.
const std::string& replaceable(const std::string& path) {
  refuseToReplace(path, "is no recording", kLongestHeader, [](const std::string& first) {
    const std::vector<std::string> all = lines(first);
    try {
      return !all.empty() && versionOf(parsed(all[0])) > 0;
    } catch (const Unfit&) {
      return false;
    }
  });
  return path;
}

}  // namespace

void Selection::setRange(const std::string& text) {
  const std::size_t dash = text.find('-');
  const auto number = [&](const std::string& digits, unsigned long otherwise) {
    unsigned long value = otherwise;
    const char* const end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, value);
    if (!digits.empty() && (read.ec != std::errc() || read.ptr != end || value == 0))
      throw std::invalid_argument("");
    return value;
  };
  try {
    if (text.empty() || text == "-") throw std::invalid_argument("");
    first = number(text.substr(0, dash), 1);
    last = dash == std::string::npos ? first : number(text.substr(dash + 1), last);
    if (first > last) throw std::invalid_argument("");
  } catch (const std::invalid_argument&) {
    throw std::invalid_argument("expected numbers of calls such as 7, 7-9, 7- or -9, found " + excerpt(text));
  }
}

void Selection::addAdapter(const std::string& name) {
  std::vector<std::string> names;
  for (const Operation& operation : operations()) names.push_back(operation.adapter);
  if (std::find(names.begin(), names.end(), name) == names.end())
    throw std::invalid_argument("expected an adapter, found " + excerpt(name) +
                                vorn_testing::didYouMean(name, names));
  adapters.insert(name);
}

bool Selection::takes(const Crossing& call) const {
  return call.number >= first && call.number <= last &&
         (adapters.empty() || adapters.count(call.adapter) > 0);
}

void Recorded::tellLeftOut(std::ostream& out) const {
  for (const std::string& told : leftOut) out << told << '\n';
  std::int64_t together = 0;
  for (const Lost& some : lost) together += some.calls;
  if (together > 0)
    out << oneLine(path) << ": calls that could not be kept when they came: " << together << '\n';
  for (const Call& call : open)
    out << oneLine(path) << ":" << call.line << ": the call " << call.call.number
        << " had not returned: " << call.call.fullName() << '\n';
}

void Recorded::keep(const Selection& selection) {
  for (std::vector<Call>* const some : {&calls, &open}) {
    some->erase(std::remove_if(some->begin(), some->end(),
                               [&](const Call& recorded) { return !selection.takes(recorded.call); }),
                some->end());
  }
}

void Recorded::mask() {
  Masker masker;
  for (std::vector<Call>* const some : {&calls, &open}) {
    for (Call& recorded : *some)
      isMisplaced(recorded.call) ? hide(recorded.call) : masker.mask(recorded.call);
  }
  for (Note& note : notes) {
    if (masker.isSecret(note.text)) note.text = kMask;
  }
  for (Sound& sound : sounds) {
    if (masker.isSecret(sound.name)) sound.name = kMask;
  }
}

Recording::Recording(const std::string& path) : m_file(replaceable(path)) {
  m_file.stream() << header() << std::endl;
}

void Recording::ended(const Crossing& call) { m_file.stream() << line(call) << std::endl; }

std::string Recording::header() { return dumped(headerLine()); }

std::string Recording::line(const Crossing& call) {
  Json json;
  for (const Field& field : fields()) json[field.told.name] = field.write(call);
  return dumped(json);
}

std::string Recording::asRead(const std::string& text) {
  return Json::parse(dumped(text)).get<std::string>();
}

void Recording::finish() { m_file.finish(); }

}  // namespace vorn_speaker
