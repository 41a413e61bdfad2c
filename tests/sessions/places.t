State folders, stores and sounds that are not as they should be.

  $ umask 022
  $ echo 'assistant VornStorage.open' > open.scenario
  $ echo 'assistant VornStorage.writeKeyValue {city=Oslo}' >> open.scenario
  $ play() { vorn-speaker --state state open.scenario 2>&1 | grep 'open() *\|open =\|state' | head -n 3; }
  $ sql() { python3 -c 'import sqlite3, sys; base = sqlite3.connect("state/store.sqlite"); base.executescript(sys.argv[1]); base.close()' "$1"; }
  $ play
    down  assistant   VornStorage                 open() = true
  $ stat -c '%a %n' state state/*
  700 state
  644 state/answer.wav
  600 state/lock
  600 state/store.sqlite

Stores of others, and damaged ones.

  $ again() { rm -rf state; mkdir -m 700 state; }
  $ again; echo 'not a store' > state/store.sqlite; play; cat state/store.sqlite
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: is not a database; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  not a store
  $ again; head -c 5000 /dev/zero > state/store.sqlite; play; wc -c < state/store.sqlite
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: is not a database; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  5000
  $ again; sql 'CREATE TABLE notes (text)'; play
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: belongs to another program; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  $ again; sql 'PRAGMA application_id = 7'; play
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: belongs to another program; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  $ again; sql 'CREATE TABLE entries (key BLOB PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID'; play
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: belongs to another program; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  $ again; play > none; sql 'DROP TABLE entries; CREATE TABLE entries (name TEXT)'; play
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: has a table 'entries' with other columns than key and value; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  $ again; play > none; sql 'ALTER TABLE entries ADD COLUMN more'; play
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: has a table 'entries' with other columns than key and value; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  $ again; play > none; sql 'DROP TABLE entries; CREATE TABLE entries (value BLOB PRIMARY KEY, key BLOB)'; play
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: has a table 'entries' with other columns than key and value; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  $ again; play > none; printf 'damaged' | dd of=state/store.sqlite bs=1 seek=4100 conv=notrunc 2> none; play
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: is damaged; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  $ again; play > none; truncate -s 4096 state/store.sqlite; play
    down  assistant   VornStorage                 open() ...
      state/store.sqlite: is damaged: database disk image is malformed; it was left as it is. Move it away or choose another folder with --state.
    down  assistant   VornStorage                 ... open = false
  $ again; mkdir state/store.sqlite; play
  vorn-speaker: state/store.sqlite: is no file; choose a folder of your own with --state
  $ again; ln -s elsewhere state/store.sqlite; play; ls
  vorn-speaker: state/store.sqlite: is a link, which is not followed; choose a folder of your own with --state
  none
  open.scenario
  state
  $ again; mkfifo state/store.sqlite; play
  vorn-speaker: state/store.sqlite: is no file; choose a folder of your own with --state
  $ again; ln -s elsewhere state/lock; play
  vorn-speaker: state/lock: is a link, which is not followed; choose a folder of your own with --state
  $ again; chmod 777 state; play
  vorn-speaker: state: may be written by everybody; choose a folder of your own with --state
  $ again; rmdir state; echo > state; play; rm state
  vorn-speaker: state: is no folder; choose a folder of your own with --state

Where a state folder is looked for.

  $ where() { env -u HOME -u XDG_STATE_HOME "$@" vorn-speaker open.scenario > none 2>&1; echo $?; find . -name 'store.sqlite' | sort; rm -rf home xdg; }
  $ where HOME="$PWD/home"
  0
  ./home/.local/state/vorn-speaker/store.sqlite
  $ where HOME="$PWD/home" XDG_STATE_HOME="$PWD/xdg"
  0
  ./xdg/vorn-speaker/store.sqlite
  $ where HOME="$PWD/home" XDG_STATE_HOME=xdg
  0
  ./home/.local/state/vorn-speaker/store.sqlite
  $ where HOME="$PWD/home" XDG_STATE_HOME=
  0
  ./home/.local/state/vorn-speaker/store.sqlite
  $ vorn-speaker --state a/b/../c/./d/ open.scenario > none; find a | sort
  a
  a/b
  a/c
  a/c/d
  a/c/d/answer.wav
  a/c/d/lock
  a/c/d/store.sqlite
  $ vorn-speaker --state '' open.scenario
  vorn-speaker: --state: expected a name, found nothing
  Run with --help for more information.
  [2]

Sound that is none, or too much of it.

  $ sound() { # RATE CHANNELS FRAMES
  >   python3 -c 'import sys, wave; rate, channels, frames = map(int, sys.argv[1:]); made = wave.open("sound.wav", "wb"); made.setparams((channels, 2, rate, 0, "NONE", "")); made.writeframes(bytes(2 * channels * frames)); made.close()' "$@"
  > }
  $ hear() { vorn-speaker --state state --audio "${1:-sound.wav}" open.scenario 2>&1 | head -n 1; }
  $ sound 16000 1 0; hear
  vorn-speaker: sound.wav: holds no samples; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz
  $ sound 7999 1 9; hear
  vorn-speaker: sound.wav: has a rate of 7999 Hz; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz
  $ sound 8000 1 9; hear
    down  assistant   VornStorage                 open() = true
  $ sound 192000 2 9; hear
    down  assistant   VornStorage                 open() = true
  $ sound 192001 1 9; hear
  vorn-speaker: sound.wav: has a rate of 192001 Hz; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz
  $ sound 16000 3 9; hear
  vorn-speaker: sound.wav: has 3 channels; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz
  $ sound 16000 2 9
  $ truncate -s 44 sound.wav; hear
  vorn-speaker: sound.wav: is damaged: only 0 of 36 bytes of its sound are left; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz
  $ truncate -s 20 sound.wav; hear
  vorn-speaker: sound.wav: Error in WAV/W64/RF64 file. Malformed 'fmt ' chunk; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz
  $ : > sound.wav; hear
  vorn-speaker: sound.wav: Format not recognised; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz
  $ hear .
  vorn-speaker: .: is a folder; name a file
  $ hear none-such
  vorn-speaker: none-such: cannot be read: No such file or directory
  $ hear /dev/null
  vorn-speaker: /dev/null: is a device or a socket; name a file
  $ mkfifo pipe; hear pipe
  vorn-speaker: pipe: is a pipe; name a file
