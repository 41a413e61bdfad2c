A trace: lines of three classes, some that differ in numbers only, a message of two lines, lines of others, a torn one.

  $ cat > session.scenario <<'END'
  > assistant VornEMPAdapterControl.login hidden ada true 1s music
  > assistant VornEMPAdapterControl.skipForward 1s music
  > assistant VornEMPAdapterControl.skipForward 2s music
  > assistant VornEMPAdapterControl.skipForward 3s music
  > assistant VornDeviceCapabilities.onSetVolume 3
  > firmware VornAppMessaging.SendMessageToxApp speaker battery full
  > firmware VornAppMessaging.SendMessageToxApp speaker battery "one\ntwo"
  > END
  $ vorn-speaker --state state session.scenario > /dev/null
  $ { printf 'somebody else\033[2J wrote this\n'; grep -v 'Instance()\|CreateInstance\|::Vorn[A-Za-z]*(' /tmp/xAppLog.txt; printf ' Time: a torn li'; } > trace
  $ cat -v trace
  somebody else^[[2J wrote this
   Time: bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: hidden, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
   Time: bool VornDeviceAbstractionLayer::VornEMPAdapterControl::skipForward(std::chrono::milliseconds, std::string): offset: 1000ms, playerId: music
   Time: bool VornDeviceAbstractionLayer::VornEMPAdapterControl::skipForward(std::chrono::milliseconds, std::string): offset: 2000ms, playerId: music
   Time: bool VornDeviceAbstractionLayer::VornEMPAdapterControl::skipForward(std::chrono::milliseconds, std::string): offset: 3000ms, playerId: music
   Time: std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onSetVolume(int)
   Time: receiveAppMessage(speaker,battery,full)
   Time: receiveAppMessage(speaker,battery,one
  two)
   Time: a torn li (no-eol)
  $ vorn-log trace | tee plain
  ?  ********
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
  VornEMPAdapterControl.skipForward  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::skipForward(std::chrono::milliseconds, std::string): offset: 1000ms, playerId: music
      and 2 more like it
  VornDeviceCapabilities.onSetVolume  std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onSetVolume(int)
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,full)
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,one
      two)
  ?  ********
      the line has no end: it was cut, or is still being written
  $ vorn-log --all trace | diff plain - | tr '<>' '-+'
  4c4,5
  -     and 2 more like it
  ---
  + VornEMPAdapterControl.skipForward  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::skipForward(std::chrono::milliseconds, std::string): offset: 2000ms, playerId: music
  + VornEMPAdapterControl.skipForward  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::skipForward(std::chrono::milliseconds, std::string): offset: 3000ms, playerId: music
  $ vorn-log --explain trace | diff plain - | tr '<>' '-+'
  1a2
  +     not a line of the library
  2a4
  +     a command for the external player arrived; the host is called if there is an instance
  3a6
  +     a command for the external player arrived; the host is called if there is an instance
  5a9
  +     a directive arrived; the host is called if there is an instance
  6a11
  +     a message goes up to the app; commas in its texts are not marked
  8a14
  +     a message goes up to the app; commas in its texts are not marked
  9a16
  +     not a line of the library
  $ vorn-log --count trace
  ?  2
    (other lines)  2
  VornAppMessaging  2
    SendMessageToxApp  2
  VornDeviceCapabilities  1
    onSetVolume  1
  VornEMPAdapterControl  4
    login  1
    skipForward  3
  A line has no end: it was cut, or is still being written
  $ vorn-log --adapter VornDeviceCapabilities --adapter '?' trace
  ?  ********
  VornDeviceCapabilities.onSetVolume  std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onSetVolume(int)
  ?  ********
      the line has no end: it was cut, or is still being written
  $ vorn-log --adapter VornEMPAdapterContrl trace
  vorn-log: --adapter: VornEMPAdapterContrl is no adapter; did you mean VornEMPAdapterControl?
  Run with --help for more information.
  [2]
  $ vorn-log --grep battery trace
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,full)
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,one
      two)
  $ vorn-log --until onSetVolume trace | diff plain - | tr '<>' '-+'
  6,10d5
  - VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,full)
  - VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,one
  -     two)
  - ?  ********
  -     the line has no end: it was cut, or is still being written
  $ vorn-log --until login --follow trace
  ?  ********
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
  $ vorn-log --grep nothing trace
  $ vorn-log --color always --grep battery trace | cat -v
  ^[[1mVornAppMessaging.SendMessageToxApp^[[0m  receiveAppMessage(speaker,battery,full)
  ^[[1mVornAppMessaging.SendMessageToxApp^[[0m  receiveAppMessage(speaker,battery,one
      two)
  $ vorn-log --secrets --grep accessToken trace
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: hidden, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
What cannot be read, or asked for.

  $ vorn-log none
  vorn-log: none cannot be read: No such file or directory; is the trace on (FileLogger::CreateInstance(true)), or is it another file? --follow waits for one
  [2]
  $ vorn-log .
  vorn-log: . cannot be read: it is a folder; name a file
  [2]
  $ vorn-log --colour trace
  vorn-log: The following argument was not expected: --colour; did you mean --color?
  Run with --help for more information.
  [2]
  $ vorn-log --color blue trace
  vorn-log: --color: blue not in {auto,always,never}
  Run with --help for more information.
  [2]
  $ vorn-log --follow ""
  vorn-log: FILE: expected a text that is not empty
  Run with --help for more information.
  [2]
  $ vorn-log --until "" trace
  vorn-log: --until: expected a text that is not empty
  Run with --help for more information.
  [2]
  $ vorn-log trace one two --three
  vorn-log: The following arguments were not expected: one two --three
  Run with --help for more information.
  [2]
  $ vorn-log trace trace
  vorn-log: The following argument was not expected: trace
  Run with --help for more information.
  [2]
  $ vorn-log trace > /dev/full
  vorn-log: standard output could not be written; is the disk full?
  [1]
  $ vorn-log --version | sed 's/[0-9.]*$/N/'
  N
  $ vorn-log --help
  Reads the trace of libVornDALImpl.so: groups, filters, explains. Tokens are masked.
  Usage: vorn-log [OPTIONS] [FILE]
  
  Positionals:
    FILE TEXT=/tmp/xAppLog.txt  The trace file
  
  Options:
    -h,--help                   Print this help message and exit
    --version                   Display program version information and exit
    -a,--adapter TEXT ...       Only lines of this class, "?" for lines of others; may be given several times
    -g,--grep TEXT              Only lines that contain this text
    -u,--until TEXT             Stop after a line that contains this text
    -f,--follow                 Go on reading while the file grows, is replaced or cut; wait for one that is not there
    -c,--count                  Count lines by class and operation instead of printing them
    -e,--explain                Say in words what each line means
    --all                       Print every line, also runs of lines that differ in numbers only
    --secrets                   Do not mask tokens
    --color TEXT:{auto,always,never}
                                Colours: auto for terminals only, unless NO_COLOR is set; always; never
  
  Exit status: 0 the trace was read, or followed until told to end; 1 the output could not be written;
  2 nothing was read.
