// The external player, command by command: whether it obeys, and what it then plays.

#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "device/parts/Playlist.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using vorn_speaker::Playlist;

/// Commands one after the other: the last one's answer, and the state afterwards as "state track position".
struct Course {
  const char* name;
  std::function<bool(Playlist&)> commands;
  bool obeyed;
  const char* state;
};

void PrintTo(const Course& course, std::ostream* out) { *out << course.name; }

class Courses : public testing::TestWithParam<Course> {
 protected:
  static std::string state(Playlist& playlist) {
    const auto all = nlohmann::json::parse(playlist.getPlaybackState("kitchen"));
    return all["state"].get<std::string>() + " " + std::to_string(all["track"].get<int>()) + " " +
           std::to_string(all["position"].get<long long>());
  }

  Playlist m_playlist;
};

TEST_P(Courses, ObeyAndArriveWhereTheyShould) {
  EXPECT_EQ(GetParam().commands(m_playlist), GetParam().obeyed);
  EXPECT_EQ(state(m_playlist), GetParam().state);
}

bool in(Playlist& p) { return p.login("token", "ada", false, milliseconds(1), "x"); }
bool play(Playlist& p) { return in(p) && p.launchAndPlay("context", milliseconds(1000), "x"); }

const Course kCourses[] = {
    {"nothing yet", [](auto&) { return true; }, true, "STOPPED 1 0"},
    {"login", in, true, "STOPPED 1 0"},
    {"login without token", [](auto& p) { return p.login("", "ada", false, milliseconds(1), "x"); }, false,
     "STOPPED 1 0"},
    {"login without name", [](auto& p) { return p.login("t", "", false, milliseconds(1), "x"); }, false,
     "STOPPED 1 0"},
    {"login again", [](auto& p) { return in(p) && in(p); }, true, "STOPPED 1 0"},
    {"login of another", [](auto& p) { return in(p), p.login("t", "bob", false, milliseconds(1), "x"); },
     false, "STOPPED 1 0"},
    {"login of another by force",
     [](auto& p) { return in(p), p.login("t", "bob", true, milliseconds(1), "x"); }, true, "STOPPED 1 0"},
    {"logout", [](auto& p) { return play(p) && p.logout("x"); }, true, "STOPPED 1 1000"},
    {"logout without login", [](auto& p) { return p.logout("x"); }, false, "STOPPED 1 0"},
    {"play without login", [](auto& p) { return p.launchAndPlay("c", milliseconds(0), "x"); }, false,
     "STOPPED 1 0"},
    {"play after logout",
     [](auto& p) { return in(p), p.logout("x"), p.launchAndPlay("c", milliseconds(0), "x"); }, false,
     "STOPPED 1 0"},
    {"play", play, true, "PLAYING 1 1000"},
    {"play from the very beginning",
     [](auto& p) { return in(p), p.launchAndPlay("c", milliseconds(0), "x"); }, true, "PLAYING 1 0"},
    {"play without context", [](auto& p) { return in(p), p.launchAndPlay("", milliseconds(0), "x"); }, false,
     "STOPPED 1 0"},
    {"play from before the beginning",
     [](auto& p) { return in(p), p.launchAndPlay("c", milliseconds(-1), "x"); }, false, "STOPPED 1 0"},
    {"play from beyond the end", [](auto& p) { return in(p), p.launchAndPlay("c", minutes(4), "x"); }, true,
     "PLAYING 1 180000"},
    {"play from the beginning again", [](auto& p) { return play(p), p.nextTrack("x"), play(p); }, true,
     "PLAYING 1 1000"},
    {"next", [](auto& p) { return play(p) && p.nextTrack("x"); }, true, "PLAYING 2 0"},
    {"next twice", [](auto& p) { return play(p) && p.nextTrack("x") && p.nextTrack("x"); }, true,
     "PLAYING 3 0"},
    {"next to the end",
     [](auto& p) { return play(p) && p.nextTrack("x") && p.nextTrack("x") && p.nextTrack("x"); }, true,
     "STOPPED 3 0"},
    {"next of nothing", [](auto& p) { return in(p), p.nextTrack("x"); }, false, "STOPPED 1 0"},
    {"previous", [](auto& p) { return play(p) && p.nextTrack("x") && p.previousTrack("x"); }, true,
     "PLAYING 1 0"},
    {"previous of the first", [](auto& p) { return play(p) && p.previousTrack("x"); }, true, "PLAYING 1 0"},
    {"previous of nothing", [](auto& p) { return in(p), p.previousTrack("x"); }, false, "STOPPED 1 0"},
    {"restart",
     [](auto& p) {
       return play(p) && p.nextTrack("x") && p.skipForward(milliseconds(5), "x") &&
              p.restartCurrentTrack("x");
     },
     true, "PLAYING 2 0"},
    {"restart of nothing", [](auto& p) { return in(p), p.restartCurrentTrack("x"); }, false, "STOPPED 1 0"},
    {"next when all repeat", [](auto& p) { return play(p) && p.setRepeatAll("x") && p.previousTrack("x"); },
     true, "PLAYING 3 0"},
    {"next over the end when all repeat",
     [](auto& p) { return play(p) && p.setRepeatAll("x") && p.previousTrack("x") && p.nextTrack("x"); }, true,
     "PLAYING 1 0"},
    {"next when one repeats", [](auto& p) { return play(p) && p.setRepeatOne("x") && p.nextTrack("x"); },
     true, "PLAYING 1 0"},
    {"next when none repeats again",
     [](auto& p) { return play(p) && p.setRepeatOne("x") && p.setRepeatNone("x") && p.nextTrack("x"); }, true,
     "PLAYING 2 0"},
    {"next when shuffled", [](auto& p) { return play(p) && p.setShuffleOn("x") && p.nextTrack("x"); }, true,
     "PLAYING 3 0"},
    {"next twice when shuffled",
     [](auto& p) { return play(p) && p.setShuffleOn("x") && p.nextTrack("x") && p.nextTrack("x"); }, true,
     "PLAYING 2 0"},
    {"previous when shuffled", [](auto& p) { return play(p) && p.setShuffleOn("x") && p.previousTrack("x"); },
     true, "PLAYING 2 0"},
    {"next when no longer shuffled",
     [](auto& p) { return play(p) && p.setShuffleOn("x") && p.setShuffleOff("x") && p.nextTrack("x"); }, true,
     "PLAYING 2 0"},
    {"pause", [](auto& p) { return play(p) && p.pause("x"); }, true, "PAUSED 1 1000"},
    {"pause twice", [](auto& p) { return play(p), p.pause("x"), p.pause("x"); }, false, "PAUSED 1 1000"},
    {"resume", [](auto& p) { return play(p) && p.pause("x") && p.resume("x"); }, true, "PLAYING 1 1000"},
    {"resume what plays", [](auto& p) { return play(p), p.resume("x"); }, false, "PLAYING 1 1000"},
    {"next while it pauses", [](auto& p) { return play(p), p.pause("x"), p.nextTrack("x"); }, true,
     "PAUSED 2 0"},
    {"stop", [](auto& p) { return play(p) && p.stop("x"); }, true, "STOPPED 1 0"},
    {"stop without login", [](auto& p) { return p.stop("x"); }, false, "STOPPED 1 0"},
    {"resume what is stopped", [](auto& p) { return play(p), p.stop("x"), p.resume("x"); }, false,
     "STOPPED 1 0"},
    {"skip", [](auto& p) { return play(p) && p.skipForward(milliseconds(500), "x"); }, true,
     "PLAYING 1 1500"},
    {"skip back", [](auto& p) { return play(p) && p.skipForward(milliseconds(-500), "x"); }, true,
     "PLAYING 1 500"},
    {"skip before the beginning", [](auto& p) { return play(p) && p.skipForward(milliseconds(-1001), "x"); },
     true, "PLAYING 1 0"},
    {"skip beyond the end",
     [](auto& p) { return play(p) && p.nextTrack("x") && p.skipForward(minutes(3), "x"); }, true,
     "PLAYING 2 120000"},
    {"skip what is stopped", [](auto& p) { return in(p), p.skipForward(milliseconds(500), "x"); }, false,
     "STOPPED 1 0"},
    {"third track's length",
     [](auto& p) {
       return play(p) && p.nextTrack("x") && p.nextTrack("x") && p.skipForward(minutes(9), "x");
     },
     true, "PLAYING 3 240000"},
};

INSTANTIATE_TEST_SUITE_P(Playlist, Courses, testing::ValuesIn(kCourses));

TEST(PlaylistState, TellsEverything) {
  Playlist playlist;
  play(playlist);
  playlist.setShuffleOn("x");
  playlist.setRepeatAll("x");
  EXPECT_EQ(nlohmann::json::parse(playlist.getPlaybackState("kitchen")),
            nlohmann::json({{"player", "kitchen"},
                            {"user", "ada"},
                            {"state", "PLAYING"},
                            {"track", 1},
                            {"title", "Morning Light"},
                            {"position", 1000},
                            {"shuffle", true},
                            {"repeat", "ALL"}}));
}

TEST(PlaylistState, NamesEachTrackAndEachWayToRepeat) {
  Playlist playlist;
  play(playlist);
  std::string told;
  for (bool (Playlist::*repeat)(std::string) :
       {&Playlist::setRepeatAll, &Playlist::setRepeatNone, &Playlist::setRepeatAll}) {
    (playlist.*repeat)("x");
    const auto state = nlohmann::json::parse(playlist.getPlaybackState(""));
    told += state["title"].get<std::string>() + " " + state["repeat"].get<std::string>() + ", ";
    playlist.nextTrack("x");
  }
  EXPECT_EQ(told, "Morning Light ALL, Kettle Song NONE, Out of the Door ALL, ");
}

TEST(PlaylistState, ForgetsItsUserAtTheLogout) {
  Playlist playlist;
  in(playlist);
  playlist.setRepeatOne("x");
  playlist.logout("x");
  const auto state = nlohmann::json::parse(playlist.getPlaybackState("\xff"));
  EXPECT_EQ(state["user"], "");
  EXPECT_EQ(state["repeat"], "ONE");
}

}  // namespace
