// The one list of operations tells what docs/operations.tsv and the headers tell, and leaves nothing out.

#include <gtest/gtest.h>
#include <vorn_testing/Operations.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>

namespace {

using namespace VornDeviceAbstractionLayer;
using vorn_testing::Constructor;
using vorn_testing::Direction;
using vorn_testing::Guard;
using vorn_testing::isSecretName;
using vorn_testing::Operation;
using Text = std::string;
using Texts = std::vector<Text>;

// Types as docs/operations.tsv spells them: as the headers do, without the namespaces of nested ones.

template <class T>
struct Tag {};

Text type(Tag<void>) { return "void"; }
Text type(Tag<bool>) { return "bool"; }
Text type(Tag<short>) { return "short"; }
Text type(Tag<int>) { return "int"; }
Text type(Tag<double>) { return "double"; }
Text type(Tag<std::int64_t>) { return "std::int64_t"; }
Text type(Tag<std::size_t>) { return "std::size_t"; }
Text type(Tag<Text>) { return "std::string"; }
Text type(Tag<std::chrono::milliseconds>) { return "std::chrono::milliseconds"; }
Text type(Tag<VornDALImplIF>) { return "VornDALImplIF"; }
Text type(Tag<VornDalMediaPlayerInterfaceImpl>) { return "VornDalMediaPlayerInterfaceImpl"; }
Text type(Tag<DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo>) { return "CommsStateInfo"; }
Text type(Tag<DeviceAbstractionLayer::CommsControllerInterface::CallAction>) { return "CallAction"; }
template <class T>
Text type(Tag<const T>);
template <class T>
Text type(Tag<T&>);
template <class T>
Text type(Tag<T*>);
template <class T>
Text type(Tag<std::vector<T>>);
template <class T>
Text type(Tag<std::shared_ptr<T>>);
template <class Key, class Value>
Text type(Tag<std::map<Key, Value>>);
template <class Key, class Value>
Text type(Tag<std::unordered_map<Key, Value>>);
template <class... P>
Text type(Tag<std::function<void(P...)>>);

/// Types one after the other, each with its name when there are names.
template <class... P>
Text types(const Texts& names = {}) {
  Text line;
  std::size_t i = 0;
  ((line += (i ? ", " : "") + type(Tag<P>()) + (i < names.size() ? " " + names[i] : ""), ++i), ...);
  return line;
}

template <class T>
Text type(Tag<const T>) {
  return "const " + types<T>();
}
template <class T>
Text type(Tag<T&>) {
  return types<T>() + "&";
}
template <class T>
Text type(Tag<T*>) {
  return types<T>() + "*";
}
template <class T>
Text type(Tag<std::vector<T>>) {
  return "std::vector<" + types<T>() + ">";
}
template <class T>
Text type(Tag<std::shared_ptr<T>>) {
  return "std::shared_ptr<" + types<T>() + ">";
}
template <class Key, class Value>
Text type(Tag<std::map<Key, Value>>) {
  return "std::map<" + types<Key, Value>() + ">";
}
template <class Key, class Value>
Text type(Tag<std::unordered_map<Key, Value>>) {
  return "std::unordered_map<" + types<Key, Value>() + ">";
}
template <class... P>
Text type(Tag<std::function<void(P...)>>) {
  return "std::function<void(" + types<P...>() + ")>";
}

Text spelled(Direction direction) {
  const std::map<Direction, Text> words = {{Direction::kDown, "down"},
                                           {Direction::kUp, "up"},
                                           {Direction::kLife, "life"},
                                           {Direction::kOwn, "own"}};
  return words.at(direction);
}

Text spelled(Guard guard) {
  const std::map<Guard, Text> words = {{Guard::kUnlocked, "unlocked"},
                                       {Guard::kMutex, "m_mutex"},
                                       {Guard::kDalMutex, "m_dalMutex"},
                                       {Guard::kOneThread, "unlocked, one thread"}};
  return words.at(guard);
}

/// The list as lines "adapter operation direction lock reaches", and each declaration with the class it stands in.
struct Listed : vorn_testing::OperationVisitor {
  std::set<Text> lines;
  std::set<Text> constructors;
  std::multimap<Text, Text> declarations;
  std::set<Text> names;        ///< Of all parameters.
  std::multiset<Text> places;  ///< "VornDALImplIF 13".
  std::size_t unnamed = 0;     ///< Operations with more or fewer names than parameters.

  Listed() { vorn_testing::visitOperations(*this); }

  template <class Host, class Result, class Adapter, class AdapterResult, class... P>
  void down(const Operation& operation, Result (Host::*)(P...), AdapterResult (Adapter::*)(P...)) {
    add<P...>(operation, lines);
    declare<P...>(operation.target, operation);
  }
  template <class Host, class Result, class... P>
  void hostOnly(const Operation& operation, Result (Host::*)(P...)) {
    declare<P...>(operation.target, operation);
    places.insert(operation.target + Text(" ") + std::to_string(operation.slot));
  }
  template <class Adapter, class Result, class... P>
  void up(const Operation& operation, Result (Adapter::*)(P...)) {
    add<P...>(operation, lines);
  }
  template <class Class, class Result, class... P>
  void own(const Operation& operation, Result (Class::*)(P...)) {
    add<P...>(operation, lines);
  }
  template <class Result, class... P>
  void life(const Operation& operation, Result (*)(P...)) {
    add<P...>(operation, lines);
  }
  template <class Adapter, class... P>
  void constructor(const Operation& operation, Constructor<Adapter, P...>) {
    add<P...>(operation, constructors);
  }

 private:
  template <class... P>
  void add(const Operation& operation, std::set<Text>& into) {
    std::ostringstream line;
    line << operation.adapter << " " << operation.name << "(" << types<P...>() << ") "
         << spelled(operation.direction) << " " << spelled(operation.guard);
    if (operation.slot) {
      line << " " << operation.target << " " << operation.slot;
      places.insert(operation.target + Text(" ") + std::to_string(operation.slot));
    }
    EXPECT_TRUE(into.insert(line.str()).second) << line.str();
    declare<P...>(operation.adapter, operation);
  }

  template <class... P>
  void declare(const Text& in, const Operation& operation) {
    const Texts own = parameterNames(operation);
    names.insert(own.begin(), own.end());
    unnamed += own.size() != sizeof...(P);
    declarations.emplace(in, operation.name + ("(" + types<P...>(own)) + ")");
  }
};

/// docs/operations.tsv as the same lines, constructors apart.
struct Documented {
  std::set<Text> lines;
  std::set<Text> constructors;

  Documented() {
    std::ifstream file(VORN_SOURCE_DIR "/docs/operations.tsv");
    Text row;
    std::getline(file, row);
    while (std::getline(file, row)) {
      Texts cells;
      std::istringstream in(row);
      for (Text cell; std::getline(in, cell, '\t');) cells.push_back(cell);
      const bool oneThread = std::regex_search(cells.at(5), std::regex("one thread|while no data flows"));
      // Of several places the operation's own: commands fetch the player first, a button press goes down too.
      const Text reaches =
          std::regex_replace(cells.at(4), std::regex("^VornDALImplIF 33, |, VornDALImplIF 12$"), "");
      const Text place = std::regex_match(reaches, std::regex("\\w+ \\d+")) ? " " + reaches : "";
      const bool constructor = cells.at(1).rfind(cells.at(0) + "(", 0) == 0;
      (constructor ? constructors : lines)
          .insert(cells.at(0) + " " + cells.at(1) + " " + cells.at(2) + " " + cells.at(3) +
                  (oneThread ? ", one thread" : "") + place);
    }
  }
};

/// What `all` has and `some` has not.
Texts without(const std::set<Text>& all, const std::set<Text>& some) {
  Texts rest;
  std::set_difference(all.begin(), all.end(), some.begin(), some.end(), std::back_inserter(rest));
  return rest;
}

TEST(TheListOfOperations, HasEveryOperationOfTheDocuments) {
  EXPECT_GT(Documented().lines.size(), 150U);
  EXPECT_EQ(without(Documented().lines, Listed().lines), Texts{});
}

TEST(TheListOfOperations, HasNoOperationThatTheDocumentsLack) {
  EXPECT_EQ(without(Listed().lines, Documented().lines), Texts{});
}

TEST(TheListOfOperations, HasEveryConstructorOfTheDocumentsWhichNameOnlyThoseThatLeaveALine) {
  EXPECT_EQ(without(Documented().constructors, Listed().constructors), Texts{});
  EXPECT_EQ(Listed().constructors.size(), 16U);
}

TEST(TheListOfOperations, HasEveryPlaceOfTheHostAndOfTheExternalPlayerOnce) {
  const Listed listed;
  for (int slot = 3; slot <= 66; ++slot)
    EXPECT_EQ(listed.places.count("VornDALImplIF " + std::to_string(slot)), 1U) << slot;
  for (int slot = 3; slot <= 18; ++slot)
    EXPECT_EQ(listed.places.count("VornEMPAdapterIF " + std::to_string(slot)), 1U) << slot;
}

TEST(TheListOfOperations, NamesParametersAsTheHeadersDo) {
  const Listed listed;
  EXPECT_EQ(listed.unnamed, 0U);
  Texts unknown;
  for (const auto& [header, declaration] : listed.declarations) {
    std::ifstream file(VORN_SOURCE_DIR "/include/" + header + ".h");
    Text text(std::istreambuf_iterator<char>(file), {});
    text = std::regex_replace(text, std::regex("\\s+"), " ");
    text = std::regex_replace(text, std::regex("\\( "), "(");
    text = std::regex_replace(text, std::regex("DeviceAbstractionLayer::\\w+Interface::"), "");
    if (text.find(" " + declaration) == Text::npos) unknown.push_back(header + ".h: " + declaration);
  }
  EXPECT_EQ(unknown, Texts{});
}

TEST(SecretNames, AreTokensPasswordsKeysAndCodesInEverySpelling) {
  for (const char* name : {"accessToken", "playContextToken", "ACCESS_TOKEN", "refresh-token", "wifiPassword",
                           "passwd", "PWD", "passphrase", "wifi_psk", "apiKey", "api_key", "API KEY",
                           "credential", "clientSecret", "setupCode", "setup code"})
    EXPECT_TRUE(isSecretName(name)) << name;
}

TEST(SecretNames, AreNoneOfTheOtherParameters) {
  std::set<Text> secret;
  for (const Text& name : Listed().names)
    if (isSecretName(name)) secret.insert(name);
  EXPECT_EQ(secret, (std::set<Text>{"accessToken", "playContextToken"}));
}

}  // namespace
