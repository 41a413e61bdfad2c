Options that are wrong, alone and together.

  $ echo 'section "nothing"' > nothing.scenario
  $ vorn-speaker one two three --four
  vorn-speaker: The following arguments were not expected: two three --four
  Run with --help for more information.
  [2]
  $ vorn-speaker --no-such
  vorn-speaker: The following argument was not expected: --no-such
  Run with --help for more information.
  [2]
  $ vorn-speaker --stat state
  vorn-speaker: The following argument was not expected: --stat; did you mean --state?
  Run with --help for more information.
  [2]
  $ vorn-speaker --state
  vorn-speaker: --state: 1 required TEXT missing
  Run with --help for more information.
  [2]
  $ vorn-speaker --state "" </dev/null
  vorn-speaker: --state: expected a name, found nothing
  Run with --help for more information.
  [2]
  $ vorn-speaker --state state --fast --real-time
  vorn-speaker: --real-time excludes --fast
  Run with --help for more information.
  [2]
  $ vorn-speaker --state state --watchdog -1
  vorn-speaker: --watchdog: expected a whole number, found -1
  Run with --help for more information.
  [2]
  $ vorn-speaker --state state --watchdog soon
  vorn-speaker: --watchdog: expected a whole number, found soon
  Run with --help for more information.
  [2]
  $ vorn-speaker --state state --watchdog 0 nothing.scenario > out && head -n 2 out
  
  nothing
  $ vorn-speaker --state state --color blue
  vorn-speaker: --color: blue not in {auto,always,never}
  Run with --help for more information.
  [2]
  $ vorn-speaker --state state --port 0 serve
  vorn-speaker: --port: Value 0 not in range 1 to 65535
  Run with --help for more information.
  [2]
  $ vorn-speaker --state state consol
  vorn-speaker: consol: there is no such scenario; did you mean console?
  [2]
  $ vorn-speaker --state state record
  vorn-speaker: RECORDING is required
  Run with --help for more information.
  [2]
  $ vorn-speaker --state state record a b
  vorn-speaker: b: cannot be read: No such file or directory
  [2]
  $ vorn-speaker --state state --device none.toml
  vorn-speaker: none.toml: cannot be read: No such file or directory
  [2]
  $ vorn-speaker --state state --audio none.wav
  vorn-speaker: none.wav: cannot be read: No such file or directory
  [2]
  $ vorn-speaker --state state --host none.so
  vorn-speaker: none.so cannot be loaded: cannot open shared object file: No such file or directory
  What it needs is looked for in its own runtime path and in LD_LIBRARY_PATH.
  [2]
  $ vorn-speaker --state state --host "$SOURCE/README.md" 2>&1 | sed "s|$SOURCE|SOURCE|g"
  vorn-speaker: SOURCE/README.md cannot be loaded: invalid ELF header
  What it needs is looked for in its own runtime path and in LD_LIBRARY_PATH.
  $ vorn-speaker --state state --out none/x.wav
  vorn-speaker: none/x.wav: cannot be written: No such file or directory; name another file with --out
  [2]
  $ vorn-speaker --state state --alsa none 2>&1 > out | grep -v '^ALSA'
  vorn-speaker: sound device 'none': No such file or directory; aplay -L lists the devices, --out plays into a file
  $ vorn-speaker --state state --scenario none.scenario record x
  vorn-speaker: none.scenario: cannot be read: No such file or directory
  [2]
  $ vorn-speaker --state state --watch none serve
  vorn-speaker: none: cannot be read: No such file or directory
  [2]
  $ vorn-speaker report none
  vorn-speaker: none: cannot be read: No such file or directory
  [2]
  $ vorn-speaker export none
  vorn-speaker: --format is required
  Run with --help for more information.
  [2]
  $ vorn-speaker --state state nothing.scenario > /dev/full
  vorn-speaker: standard output could not be written; is the disk full?
  [1]
  $ vorn-speaker --list > /dev/full
  vorn-speaker: standard output could not be written; is the disk full?
  [1]
  $ vorn-speaker --version | sed 's/[0-9.]*$/N/'
  N
Device files.

  $ device() { printf '%s\n' "$@" > d.toml; vorn-speaker --state state --device d.toml nothing.scenario; }
  $ device 'volume = 101'
  vorn-speaker: d.toml:1:10: 'volume' must be a whole number from 0 to 100
  [2]
  $ device 'volume = "loud"'
  vorn-speaker: d.toml:1:10: 'volume' must be a whole number from 0 to 100
  [2]
  $ device 'volume = 1.5'
  vorn-speaker: d.toml:1:10: 'volume' must be a whole number from 0 to 100
  [2]
  $ device 'volum = 30'
  vorn-speaker: d.toml:1:9: 'volum' is not known here; known are capabilities, config, information, locale, microphoneAvailable, muted, networkConnected, settings, timezone, volume
  [2]
  $ device 'muted = 1'
  vorn-speaker: d.toml:1:9: 'muted' must be true or false
  [2]
  $ device 'timezone = 3'
  vorn-speaker: d.toml:1:12: 'timezone' must be a text in quotes
  [2]
  $ device '[setting]' 'channel = "3"'
  vorn-speaker: d.toml:1:1: 'setting' is not known here; known are capabilities, config, information, locale, microphoneAvailable, muted, networkConnected, settings, timezone, volume
  [2]
  $ device '[settings' 'channel = "3"'
  vorn-speaker: d.toml:1:10: Error while parsing table header: expected ']', saw '\n'
  [2]
  $ device '[settings]' 'channel = 3'
  vorn-speaker: d.toml:2:11: 'channel' must be a text in quotes
  [2]
  $ device '[settings]' 'channel = "3"' 'channel = "4"'
  vorn-speaker: d.toml:3:11: Error while parsing key-value pair: cannot redefine existing string 'channel'
  [2]
  $ device 'settings = "none"'
  vorn-speaker: d.toml:1:12: 'settings' must be a table of texts
  [2]
  $ device '[information]' 'brand = ["a", "b"]'
  vorn-speaker: d.toml:2:9: 'brand' must be a text in quotes
  [2]
  $ device '[config]' 'clientID = true'
  vorn-speaker: d.toml:2:12: 'clientID' must be a text in quotes
  [2]
  $ device 'capabilities = 3'
  vorn-speaker: d.toml:1:16: 'capabilities' must be a text in quotes
  [2]
Help.

  $ COLUMNS=100 vorn-speaker --help | sed "s|$SOURCE|SOURCE|; s|[^ =]*/data/|DATA/|; s|[^ =]*/\.local/|HOME/.local/|"
  Plays a simulated speaker, firmware and assistant client in one process, and prints every call.
  Usage: vorn-speaker [OPTIONS] [SCENARIO] [SUBCOMMAND]
  
  Positionals:
    SCENARIO TEXT               The scenario to play; without one, a whole morning
  
  Options:
    -h,--help                   Print this help message and exit
    --help-all                  Print help of all commands
    --version                   Display program version information and exit
    --state TEXT=HOME/.local/state/vorn-speaker
                                The folder of the key-value store
    --device TEXT=DATA/device.toml
                                The device's facts and settings (TOML)
    --audio TEXT=DATA/request.wav
                                What the microphone hears (WAV, FLAC or OGG)
    --out TEXT Excludes: --alsa The WAV file that the players play to; answer.wav in the state folder
    --alsa TEXT Excludes: --out The ALSA device that the players play to instead, such as default
    --real-time Excludes: --fast
                                Keep the microphone's real time
    --fast Excludes: --real-time
                                Go as fast as it goes, as without --real-time
    --no-trace                  Leave the library's trace off
    --strict                    Fail when an operation was never called
    --keep-going                Go on after an expectation that is not met, or a call that is answered differently
    --all                       Count also the operations that were never called
    --every-block               Print every block of sound, not one line a stream
    --secrets                   Print tokens and secrets in clear
    --host TEXT                 A library with a host of your own, in place of the simulated one
    --watchdog INT              Seconds that a call of the host may take, and its loading, making, destroying and unloading each, 0 for
                                ever; 10 with --host, with serve and in replays
    --color TEXT:{auto,always,never}
                                Colours: auto for terminals only, unless NO_COLOR is set; always; never
    --port INT:INT in [1 - 65535]
                                The port of the page that serve shows; a free one unless given
    --watch TEXT                A recording that serve shows in place of a speaker; what is added to it is shown as it comes
    --list                      List the operations with their arguments, and end
    --scenario TEXT             The scenario to play; without one, a whole morning
  
  
  Subcommands:
    console                     Type statements and see them played
    record                      Play a scenario (of --scenario, or the morning) and write every call to a file
    replay                      Play the calls of a recording and tell the first that is answered differently
    report                      Print a recording for people: calls, durations, waits; or how two differ
    export                      Write a recording in a form that other programs read
    serve                       Show the speaker on a page in the browser of this machine, and play with it there
  
  A scenario holds one statement a line, values as words, "texts", [lists] and {key=value} sets; # begins a comment:
    assistant ADAPTER.OPERATION ARGUMENT...         the assistant client calls an adapter (down)
    firmware ADAPTER.OPERATION ARGUMENT...          the firmware calls an adapter (up)
    together COUNT ADAPTER.OPERATION ARGUMENT...    so many threads of the assistant client make the call at once; their results, if they differ, are separated by semicolons
    expect RESULT                                   the last call gave this result, as it is printed
    expect call ADAPTER.OPERATION [ARGUMENT...] [within DURATION] the last call led to this one, with exactly these arguments if any are told; `within` waits for it
    expect no call [ADAPTER.OPERATION [ARGUMENT...]] the last call led to none, or not to this one
    expect heard SAMPLES|some [within DURATION]     what the assistant side has heard so far; `within` waits for it
    expect trace TEXT                               a line that the library traced since the start holds the text
    expect every operation                          every operation has been called by now
    remove AREA                                     takes an object of the assistant side away: `DeviceInfo`, `DeviceCapabilities`, `GUIOutput`, `OOBE`, `AudioIn`, `AppMessaging`, `CommsManager` or `all`; `adapters` shuts the library's own down, `trace` has the trace file not be written
    create AREA                                     brings it back
    answer QUESTION VALUE                           what the assistant side answers: `authStatus` a text, `messageAccepted` and `playbackActionAccepted` a flag
    delay ADAPTER.OPERATION DURATION                from now on calls of the operation wait so long where they arrive, before they are answered
    fail ADAPTER.OPERATION TEXT                     from now on calls of the operation throw this text where they arrive
    restore ADAPTER.OPERATION                       ends both
    wait microphone                                 until the microphone has delivered its sound
    section TITLE                                   prints a heading
  Exit status: 0 done, 1 an expectation was not met, an answer differs or an output was lost, 2 nothing was
  done, 3 the host failed: it crashed, ended the program or did not return; 128 and its number after a signal.
  $ vorn-speaker help getVolume
  vorn-speaker: The following argument was not expected: getVolume
  Run with --help for more information.
  [2]
Sound goes to a device in place of the file.

  $ printf 'pcm.nowhere { type null }\n' > .asoundrc
  $ HOME=$PWD vorn-speaker --state sound --alsa nowhere > out; test -e sound/answer.wav
  [1]
  $ vorn-speaker --state sound > out; test -s sound/answer.wav
  $ HOME=$PWD vorn-speaker --state sound --alsa nowhere --audio sound/answer.wav nothing.scenario > out
The program by another name, and one that lost what shipped with it.

  $ ln -s "$(command -v vorn-speaker)" linked && ./linked --state state nothing.scenario > out
  $ mkdir bin && cp "$(command -v vorn-speaker)" bin && bin/vorn-speaker --state state nothing.scenario 2>&1 | sed "s|$PWD|HERE|"
  vorn-speaker: HERE/share/vorn-dal/speaker/device.toml: cannot be read: No such file or directory
