The trace of three calls, and lines of others.

  $ cat > session.scenario <<'END'
  > assistant VornDeviceInfo.setSystemSetting channel 7
  > assistant VornEMPAdapterControl.login hidden ada true 1s music
  > firmware VornAppMessaging.SendMessageToxApp speaker battery full
  > firmware VornAppMessaging.SendMessageToxApp speaker battery half
  > END
  $ vorn-speaker --state state session.scenario > /dev/null
  $ cp /tmp/xAppLog.txt trace
  $ printf 'somebody else\033[2J wrote this\n' >> trace
  $ printf 'a torn li' >> trace
  $ cat -v trace
   Time: VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
   Time: VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
   Time: static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
   Time: VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
   Time: static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
   Time: VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
   Time: static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
   Time: bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: hidden, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
   Time: receiveAppMessage(speaker,battery,full)
   Time: receiveAppMessage(speaker,battery,half)
  somebody else^[[2J wrote this
  a torn li (no-eol)
  $ vorn-log trace
  VornAudioIn.VornAudioIn  VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornMediaPlayerFactory.VornMediaPlayerFactory  VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
  VornDeviceCapabilities.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornDeviceCapabilities.VornDeviceCapabilities  VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.VornEMPAdapterControl  VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.getInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,full)
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,half)
      somebody else\x1b[2J wrote this
      a torn li
      the line has no end: it was cut, or is still being written
  $ vorn-log --all trace
  VornAudioIn.VornAudioIn  VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornMediaPlayerFactory.VornMediaPlayerFactory  VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
  VornDeviceCapabilities.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornDeviceCapabilities.VornDeviceCapabilities  VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.VornEMPAdapterControl  VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.getInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,full)
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,half)
      somebody else\x1b[2J wrote this
      a torn li
      the line has no end: it was cut, or is still being written
  $ vorn-log --explain trace
  VornAudioIn.VornAudioIn  VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
      an object of the class was made
  VornMediaPlayerFactory.VornMediaPlayerFactory  VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
      an object of the class was made
  VornDeviceCapabilities.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
      the firmware asked for the adapter to be created
  VornDeviceCapabilities.VornDeviceCapabilities  VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
      an object of the class was made
  VornEMPAdapterControl.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
      the firmware asked for the adapter to be created
  VornEMPAdapterControl.VornEMPAdapterControl  VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
      an object of the class was made
  VornEMPAdapterControl.getInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
      somebody fetched the adapter
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
      a command for the external player arrived; the host is called if there is an instance
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,full)
      a message goes up to the app; commas in its texts are not marked
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,half)
      somebody else\x1b[2J wrote this
      a torn li
      a message goes up to the app; commas in its texts are not marked
      the line has no end: it was cut, or is still being written
  $ vorn-log --count trace
  VornAppMessaging  2
    SendMessageToxApp  2
  VornAudioIn  1
    VornAudioIn  1
  VornDeviceCapabilities  2
    CreateInstance  1
    VornDeviceCapabilities  1
  VornEMPAdapterControl  4
    CreateInstance  1
    VornEMPAdapterControl  1
    getInstance  1
    login  1
  VornMediaPlayerFactory  1
    VornMediaPlayerFactory  1
  $ vorn-log --adapter VornEMPAdapterControl --adapter '?' trace
  VornEMPAdapterControl.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.VornEMPAdapterControl  VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.getInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
  $ vorn-log --adapter VornEMPAdapterContrl trace
  vorn-log: --adapter: VornEMPAdapterContrl is no adapter; did you mean VornEMPAdapterControl?
  Run with --help for more information.
  [2]
  $ vorn-log --grep battery trace
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,full)
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,half)
      somebody else\x1b[2J wrote this
      a torn li
      the line has no end: it was cut, or is still being written
  $ vorn-log --until login trace
  VornAudioIn.VornAudioIn  VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornMediaPlayerFactory.VornMediaPlayerFactory  VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
  VornDeviceCapabilities.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornDeviceCapabilities.VornDeviceCapabilities  VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.VornEMPAdapterControl  VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.getInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
  $ vorn-log --until login --follow trace
  VornAudioIn.VornAudioIn  VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornMediaPlayerFactory.VornMediaPlayerFactory  VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
  VornDeviceCapabilities.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornDeviceCapabilities.VornDeviceCapabilities  VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.VornEMPAdapterControl  VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.getInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
  $ vorn-log --grep nothing trace
  $ vorn-log --until nothing trace
  VornAudioIn.VornAudioIn  VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornMediaPlayerFactory.VornMediaPlayerFactory  VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
  VornDeviceCapabilities.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornDeviceCapabilities.VornDeviceCapabilities  VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.CreateInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.VornEMPAdapterControl  VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
  VornEMPAdapterControl.getInstance  static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,full)
  VornAppMessaging.SendMessageToxApp  receiveAppMessage(speaker,battery,half)
      somebody else\x1b[2J wrote this
      a torn li
      the line has no end: it was cut, or is still being written
  $ vorn-log --color always --grep battery trace | cat -v
  ^[[1mVornAppMessaging.SendMessageToxApp^[[0m  receiveAppMessage(speaker,battery,full)
  ^[[1mVornAppMessaging.SendMessageToxApp^[[0m  receiveAppMessage(speaker,battery,half)
      somebody else\x1b[2J wrote this
      a torn li
      the line has no end: it was cut, or is still being written
  $ vorn-log --secrets --grep accessToken trace
  VornEMPAdapterControl.login  bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: hidden, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
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
