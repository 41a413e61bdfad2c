The morning that ships, as everybody sees it first. The second time the device knows what it was told.

  $ vorn-speaker --state state | LC_ALL=C.UTF-8 iconv -t ASCII//TRANSLIT
  
  The speaker boots
    down  assistant   VornStorage                 open() = true
    down  assistant   VornStorage                 writeKeyValue({alarm=07:00, city=Oslo, guest=yes}) = true
    down  assistant   VornStorage                 readKeyValue(city) = {city=Oslo}
    down  assistant   VornStorage                 removeKeyValue([guest]) = true
    down  assistant   VornDeviceInfo              getDeviceInformation() = {brand=Vorn, currentHandsFreeStatus=on, deviceCountryCode=US, deviceLocale=en-US, deviceMode=AMBIENT, deviceSerialNumber=SIM-000001, displayCategory=SPEAKER, firmwareVersion=1.0.0, friendlyName=Kitchen, manufacturer=Vorn, manufacturerYear=2026, model=Simulated Speaker, softwareVersion=1.0.0, supportsHandsFree=true}
    down  assistant   VornDeviceInfo              getDeviceLocale() = en-US
    down  assistant   VornDeviceInfo              getTimezone() = America/Vancouver
    down  assistant   VornDeviceInfo              getConfigData(productID) = simulated-product
    down  assistant   VornDeviceInfo              getVSKCapabilities() = [{"interface": "Volume", "version": "1.0"}, {"interface": "PowerState", "version": "1.0"}]
    down  assistant   VornDeviceInfo              getNetworkConnectionStatus() = true
    down  assistant   VornDeviceInfo              updateInternetConnectionStatus(true)
    up    firmware    VornDeviceInfo              notifyNetworkConnectionChanged(CONNECTED)
    down  assistant   VornAlexaState              alexaStateChanged(READY)
    down  assistant   VornAlexaState              notifyMainAppInitialized()
    down  assistant   VornLoggerObserver          onLogEmitted(info, assistant client is up) ...
      log info: assistant client is up
    down  assistant   VornLoggerObserver          ... onLogEmitted
  
  Somebody sets it up
    up    firmware    VornOOBE                    notifyOOBEInitiated()
    up    firmware    VornOOBE                    notifyOOBECancelled()
    up    firmware    VornOOBE                    notifyOOBEInitiated()
    up    firmware    VornOOBE                    getAlexaAuthStatus() = UNAUTHORIZED
    down  assistant   VornOOBE                    sendCBLInfo(https://link.example/code, AB12CD, 600) ...
      + Set up your speaker -------------------------------------+
      | Go to     https://link.example/code                      |
      | and enter AB12CD                                         |
      | The code is good for 600 s.                              |
      | Waiting ...                                              |
      +----------------------------------------------------------+
    down  assistant   VornOOBE                    ... sendCBLInfo
    down  assistant   VornOOBE                    alexaAuthStatusChanged(AUTHORIZED) ...
      + Set up your speaker -------------------------------------+
      | Linked.                                                  |
      +----------------------------------------------------------+
    down  assistant   VornOOBE                    ... alexaAuthStatusChanged
    up    firmware    VornOOBE                    getAlexaAuthStatus() = AUTHORIZED
    up    firmware    VornDeviceCapabilities      notifyFriendlyNameChange(Kitchen speaker)
    up    firmware    VornDeviceCapabilities      notifyUpdatedAssociation(speaker, kitchen)
    down  assistant   VornDeviceInfo              changeAlexaLocale(en-GB)
    up    firmware    VornDeviceInfo              notifyLocaleChange(en-GB)
    up    firmware    VornDeviceInfo              notifyLocaleChange([en-GB, nb-NO])
    down  assistant   VornDeviceInfo              setSystemSetting(handsFreeAlwaysOnEnabled, on) = true
    down  assistant   VornDeviceInfo              getSystemSetting(handsFreeAlwaysOnEnabled, ) = true value=on
    up    firmware    VornDeviceInfo              notifySystemSettingChanged(handsFreeAlwaysOnEnabled, on)
    down  assistant   VornAudioIn                 setAlexaHandsFreeState(true)
    up    firmware    VornDeviceInfo              notifyHandsfreeStateChanged(true)
    up    firmware    VornDeviceInfo              notifyMicrophoneAvailabilityChanged(AVAILABLE)
  
  What is the weather like?
    down  assistant   VornAudioIn                 isMicrophoneAvailable() = true
    down  assistant   VornAudioIn                 notifyAlexaInvocationDetected(WakeWordDetected)
    down  assistant   VornAlexaState              dialogUXStateChanged(LISTENING)
    down  assistant   VornLEDController           setAnimation([listening, pulse]) ...
      ( ???????????? )  listening
      ( ???????????? )  pulse
    down  assistant   VornLEDController           ... setAnimation = 2
    down  assistant   VornAudioIn                 startStreamingAudioData() = true
    up    microphone  VornAudioIn                 sendAudioData([160 samples])
    up    microphone  VornAudioIn                 ... 109 more of sendAudioData
    down  assistant   VornAudioIn                 stopStreamingAudioData()
  
  The speaker answers
    down  assistant   VornAlexaState              dialogUXStateChanged(SPEAKING)
    down  assistant   VornAudioFocus              requestAudioFocus() = true
    down  assistant   VornMediaPlayerFactory      Configure(SpeechPlayer, true, false)
    down  assistant   VornAttachmentReaderContainerFactory  createAttachmentReaderContainer()
    up    firmware    VornAttachmentReaderContainerInterfaceImpl  Subscribe(SpeechPlayer)
    down  assistant   VornAttachmentReaderContainerInterfaceImpl  sendData(4096 bytes)
    down  assistant   VornAttachmentReaderContainerInterfaceImpl  ... 15 more of sendData
    down  assistant   VornAttachmentReaderContainerInterfaceImpl  notifyEndOfStream() ...
    up    assistant   MediaPlayerCallback           news(PLAYING)
    up    assistant   MediaPlayerCallback           news(FINISHED)
    down  assistant   VornAttachmentReaderContainerInterfaceImpl  ... notifyEndOfStream
    up    firmware    VornAttachmentReaderContainerInterfaceImpl  GetOnCloseCallbackFunction()
    up    firmware    AttachmentCallback          onClose(played to the end)
    up    firmware    VornAttachmentReaderContainerInterfaceImpl  Unsubscribe()
    down  assistant   VornGUIOutput               renderGUICard({"title":"Oslo","text":"Rain until noon, then sun, 14 degrees"}) ...
      + Oslo ----------------------------------------------------+
      | Rain until noon, then sun, 14 degrees                    |
      +----------------------------------------------------------+
    down  assistant   VornGUIOutput               ... renderGUICard = true
    up    firmware    VornGUIOutput               notifyPlaybackControllerAction(NEXT) = true
    down  assistant   VornGUIOutput               clearGUICard() ...
      (the card is gone)
    down  assistant   VornGUIOutput               ... clearGUICard = true
    down  assistant   VornLEDController           setAnimation([]) ...
      ( ............ )  lights off
    down  assistant   VornLEDController           ... setAnimation = 0
    down  assistant   VornAudioFocus              releaseAudioFocus() = true
    down  assistant   VornAlexaState              dialogUXStateChanged(IDLE)
  
  Too loud, too quiet
    down  assistant   VornDeviceCapabilities      onSetVolume(30) ...
    up    assistant   VornDeviceInfo                notifyVolumeChanged(30)
    down  assistant   VornDeviceCapabilities      ... onSetVolume = true volume 30
    down  assistant   VornDeviceInfo              getVolume() = 30
    down  assistant   VornDeviceCapabilities      onAdjustVolume(15) ...
    up    assistant   VornDeviceInfo                notifyVolumeChanged(45)
    down  assistant   VornDeviceCapabilities      ... onAdjustVolume = true volume 45
    down  assistant   VornDeviceCapabilities      onMute(true) ...
    up    assistant   VornDeviceInfo                notifyMuteChanged(true)
    down  assistant   VornDeviceCapabilities      ... onMute = true muted
    down  assistant   VornDeviceInfo              getMuteStatus() = true
    up    firmware    VornDeviceInfo              notifyMuteChanged(false)
    up    firmware    VornDeviceInfo              notifyVolumeChanged(50)
  
  The talk button
    up    firmware    VornAudioIn                 notifyAlexaButtonPress(AlexaButtonPress, 300ms)
    down  firmware    VornAudioIn                 notifyAlexaInvocationDetected(AlexaButtonPress)
    up    firmware    VornAudioIn                 notifyAlexaButtonReleased()
  
  Television
    down  assistant   VornDeviceCapabilities      onSetPowerState(true) = true power ON
    down  assistant   VornDeviceCapabilities      onSetPowerState(true, television) = true power of television ON
    down  assistant   VornDeviceCapabilities      onInputChange(HDMI 1) = true
    down  assistant   VornDeviceCapabilities      onChangeChannel(7) = true channel 7
    down  assistant   VornDeviceCapabilities      onSkipChannel(2) = true channel 9
    down  assistant   VornDeviceInfo              getSystemSetting(channel, ) = true value=9
    down  assistant   VornDeviceCapabilities      onSendKeystroke(UP) = true keystroke UP
    down  assistant   VornDeviceCapabilities      onLaunchTarget(news) = true launched news
    down  assistant   VornDeviceCapabilities      onSearchAndPlay(morning news) = true playing morning news
    down  assistant   VornDeviceCapabilities      onSearchAndDisplayResults(weather radar) = true results weather radar
    down  assistant   VornDeviceCapabilities      onChangePlaybackPlay() = true playback PLAYING
    down  assistant   VornDeviceCapabilities      onChangePlaybackPause() = true playback PAUSED
    down  assistant   VornDeviceCapabilities      onChangePlaybackRewind() = true playback REWINDING
    down  assistant   VornDeviceCapabilities      onChangePlaybackFastForward() = true playback WINDING FORWARD
    down  assistant   VornDeviceCapabilities      onChangePlaybackNext() = true playback NEXT
    down  assistant   VornDeviceCapabilities      onChangePlaybackPrevious() = true playback PREVIOUS
    down  assistant   VornDeviceCapabilities      onChangePlaybackStartOver() = true playback STARTED OVER
    down  assistant   VornDeviceCapabilities      onChangePlaybackStop() = true playback STOPPED
    down  assistant   VornDeviceCapabilities      onAdjustSeekPosition(30000) = true position 30000 s
    down  assistant   VornDeviceCapabilities      onSetMode(picture, cinema) = true mode picture cinema
    down  assistant   VornDeviceCapabilities      onSetMode(brightness, 5) = true mode brightness 5
    down  assistant   VornDeviceCapabilities      onAdjustMode(brightness, 2) = true mode brightness 7
    down  assistant   VornDeviceCapabilities      onSetRangeValue(3) = true range 3
    down  assistant   VornDeviceCapabilities      onAdjustRangeValue(0.5) = true range 3.5
    down  assistant   VornDeviceCapabilities      onSetToggleState(subtitles, ON) = true toggle subtitles ON
    down  assistant   VornDeviceCapabilities      onStartRecording() = true recording
    down  assistant   VornDeviceCapabilities      onStopRecording() = true recording ended
  
  Music
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       login(********, ada, true, 3600000ms, music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       launchAndPlay(********, 5000ms, music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       nextTrack(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       previousTrack(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       restartCurrentTrack(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       skipForward(10000ms, music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       setShuffleOn(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       setShuffleOff(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       setRepeatAll(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       setRepeatOne(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       setRepeatNone(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       pause(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       resume(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       getPlaybackState(music) = {"player":"music","position":10000,"repeat":"NONE","shuffle":false,"state":"PLAYING","title":"Morning Light","track":1,"user":"ada"}
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       stop(music) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       logout(music) = true
  
  A message from the phone
    down  assistant   VornAppMessaging            sendAppMessage(phone, ping, 1) ...
    up    assistant   VornAppMessaging              SendMessageToxApp(phone, received ping, 1) = true
    down  assistant   VornAppMessaging            ... sendAppMessage
          VornAppMessaging.sendAppMessage gave true
    up    firmware    VornAppMessaging            SendMessageToxApp(speaker, battery, full) = true
  
  Somebody calls
    down  assistant   VornCommsManager            onCommsStateChanged(RINGING) ...
      + Call ----------------------------------------------------+
      | Ringing ...                                              |
      +----------------------------------------------------------+
    down  assistant   VornCommsManager            ... onCommsStateChanged
    up    firmware    VornCommsManager            notifyCallAction(1)
    down  assistant   VornCommsManager            onCommsStateChanged(CONNECTED) ...
      + Call ----------------------------------------------------+
      | CONNECTED                                                |
      +----------------------------------------------------------+
    down  assistant   VornCommsManager            ... onCommsStateChanged
    down  assistant   VornCommsManager            onCommsStateChanged(ENDED) ...
      + Call ----------------------------------------------------+
      | ENDED                                                    |
      +----------------------------------------------------------+
    down  assistant   VornCommsManager            ... onCommsStateChanged
  
  The speaker shuts down
    down  assistant   VornStorage                 clear() = true
  
  What the library traced meanwhile
    trace VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace void VornDeviceAbstractionLayer::VornAudioIn::setAlexaHandsFreeState(bool) calling xApp API
    trace void VornDeviceAbstractionLayer::VornAudioIn::notifyAlexaInvocationDetected(std::string) calling xApp API
    trace void VornDeviceAbstractionLayer::VornAudioIn::sendAudioData(std::vector<short int>&) calling AudioInHelper getInstance 1
    trace void VornDeviceAbstractionLayer::VornAudioIn::sendAudioData(std::vector<short int>&) calling xApp API count=1
    trace VornMediaPlayerFactory::createDalMediaPlayer name=SpeechPlayer
    trace std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onSetVolume(int)
    trace std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onAdjustVolume(int)
    trace std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onMute(bool)
    trace void VornDeviceAbstractionLayer::VornAudioIn::notifyAlexaButtonPress(std::string, std::chrono::milliseconds) calling xApp API
    trace void VornDeviceAbstractionLayer::VornAudioIn::notifyAlexaButtonReleased() calling xApp API
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 3600000ms, playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::launchAndPlay(std::string, std::chrono::milliseconds, std::string): playContextToken: ********, offset: 5000ms, playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::nextTrack(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::previousTrack(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::restartCurrentTrack(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::skipForward(std::chrono::milliseconds, std::string): offset: 10000ms, playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setShuffleOn(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setShuffleOff(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setRepeatAll(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setRepeatOne(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setRepeatNone(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::pause(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::resume(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace std::string VornDeviceAbstractionLayer::VornEMPAdapterControl::getPlaybackState(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::stop(std::string): playerId: music
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::logout(std::string): playerId: music
    trace receiveAppMessage(phone,received ping,1)
    trace receiveAppMessage(speaker,battery,full)
    trace void VornDeviceAbstractionLayer::VornCommsManager::onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&)
    trace void VornDeviceAbstractionLayer::VornCommsManager::notifyCallAction(DeviceAbstractionLayer::CommsControllerInterface::CallAction)
    trace void VornDeviceAbstractionLayer::VornCommsManager::onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&)
  
  Calls that arrived                                                            down      up
  VornAlexaState.alexaStateChanged                                                 1
  VornAlexaState.dialogUXStateChanged                                              3
  VornAlexaState.notifyMainAppInitialized                                          1
  VornAppMessaging.sendAppMessage                                                  1
  VornAppMessaging.SendMessageToxApp                                                       2
  VornAudioFocus.requestAudioFocus                                                 1
  VornAudioFocus.releaseAudioFocus                                                 1
  VornAudioIn.startStreamingAudioData                                              1
  VornAudioIn.stopStreamingAudioData                                               1
  VornAudioIn.isMicrophoneAvailable                                                1
  VornAudioIn.setAlexaHandsFreeState                                               1
  VornAudioIn.notifyAlexaInvocationDetected                                        2
  VornAudioIn.notifyAlexaButtonPress                                                       1
  VornAudioIn.notifyAlexaButtonReleased                                                    1
  VornAudioIn.sendAudioData                                                              110
  VornMediaPlayerFactory.createDalMediaPlayer                                      1
  VornAttachmentReaderContainerFactory.createAttachmentReaderContainer             1
  VornAttachmentReaderContainerInterfaceImpl.Subscribe                                     1
  VornAttachmentReaderContainerInterfaceImpl.Unsubscribe                                   1
  VornAttachmentReaderContainerInterfaceImpl.sendData                             16
  VornAttachmentReaderContainerInterfaceImpl.notifyEndOfStream                     1
  VornAttachmentReaderContainerInterfaceImpl.GetOnCloseCallbackFunction                    1
  VornDeviceCapabilities.onChangeChannel                                           1
  VornDeviceCapabilities.onInputChange                                             1
  VornDeviceCapabilities.onSkipChannel                                             1
  VornDeviceCapabilities.onSendKeystroke                                           1
  VornDeviceCapabilities.onChangePlaybackPlay                                      1
  VornDeviceCapabilities.onChangePlaybackPause                                     1
  VornDeviceCapabilities.onChangePlaybackStop                                      1
  VornDeviceCapabilities.onChangePlaybackStartOver                                 1
  VornDeviceCapabilities.onChangePlaybackPrevious                                  1
  VornDeviceCapabilities.onChangePlaybackNext                                      1
  VornDeviceCapabilities.onChangePlaybackRewind                                    1
  VornDeviceCapabilities.onChangePlaybackFastForward                               1
  VornDeviceCapabilities.onSearchAndPlay                                           1
  VornDeviceCapabilities.onSearchAndDisplayResults                                 1
  VornDeviceCapabilities.onSetMode                                                 2
  VornDeviceCapabilities.onAdjustMode                                              1
  VornDeviceCapabilities.onSetPowerState on                                        1
  VornDeviceCapabilities.onSetPowerState on target                                 1
  VornDeviceCapabilities.onSetRangeValue                                           1
  VornDeviceCapabilities.onAdjustRangeValue                                        1
  VornDeviceCapabilities.onSetToggleState                                          1
  VornDeviceCapabilities.onLaunchTarget                                            1
  VornDeviceCapabilities.onStartRecording                                          1
  VornDeviceCapabilities.onStopRecording                                           1
  VornDeviceCapabilities.onAdjustSeekPosition                                      1
  VornDeviceCapabilities.onSetVolume                                               1
  VornDeviceCapabilities.onAdjustVolume                                            1
  VornDeviceCapabilities.onMute                                                    1
  VornDeviceCapabilities.notifyUpdatedAssociation                                          1
  VornDeviceCapabilities.notifyFriendlyNameChange                                          1
  VornDeviceInfo.getVolume                                                         1
  VornDeviceInfo.getMuteStatus                                                     1
  VornDeviceInfo.getTimezone                                                       1
  VornDeviceInfo.getDeviceLocale                                                   1
  VornDeviceInfo.changeAlexaLocale                                                 1
  VornDeviceInfo.getDeviceInformation                                              1
  VornDeviceInfo.getNetworkConnectionStatus                                        1
  VornDeviceInfo.updateInternetConnectionStatus                                    1
  VornDeviceInfo.getConfigData                                                     1
  VornDeviceInfo.getSystemSetting                                                  2
  VornDeviceInfo.setSystemSetting                                                  1
  VornDeviceInfo.getVSKCapabilities                                                1
  VornDeviceInfo.notifySystemSettingChanged                                                1
  VornDeviceInfo.notifyLocaleChange locale                                                 1
  VornDeviceInfo.notifyLocaleChange locales                                                1
  VornDeviceInfo.notifyNetworkConnectionChanged                                            1
  VornDeviceInfo.notifyMicrophoneAvailabilityChanged                                       1
  VornDeviceInfo.notifyVolumeChanged                                                       3
  VornDeviceInfo.notifyMuteChanged                                                         2
  VornDeviceInfo.notifyHandsfreeStateChanged                                               1
  VornGUIOutput.clearGUICard                                                       1
  VornGUIOutput.renderGUICard                                                      1
  VornGUIOutput.notifyPlaybackControllerAction                                             1
  VornLEDController.setAnimation                                                   2
  VornLoggerObserver.onLogEmitted                                                  1
  VornOOBE.sendCBLInfo                                                             1
  VornOOBE.alexaAuthStatusChanged                                                  1
  VornOOBE.notifyOOBEInitiated                                                             2
  VornOOBE.notifyOOBECancelled                                                             1
  VornOOBE.getAlexaAuthStatus                                                              2
  VornStorage.open                                                                 1
  VornStorage.readKeyValue                                                         1
  VornStorage.writeKeyValue                                                        1
  VornStorage.removeKeyValue                                                       1
  VornStorage.clear                                                                1
  VornEMPAdapterControl.login                                                      1
  VornEMPAdapterControl.logout                                                     1
  VornEMPAdapterControl.launchAndPlay                                              1
  VornEMPAdapterControl.nextTrack                                                  1
  VornEMPAdapterControl.previousTrack                                              1
  VornEMPAdapterControl.restartCurrentTrack                                        1
  VornEMPAdapterControl.setShuffleOn                                               1
  VornEMPAdapterControl.setShuffleOff                                              1
  VornEMPAdapterControl.resume                                                     1
  VornEMPAdapterControl.pause                                                      1
  VornEMPAdapterControl.stop                                                       1
  VornEMPAdapterControl.skipForward                                                1
  VornEMPAdapterControl.setRepeatAll                                               1
  VornEMPAdapterControl.setRepeatNone                                              1
  VornEMPAdapterControl.setRepeatOne                                               1
  VornEMPAdapterControl.getPlaybackState                                           1
  VornCommsManager.onCommsStateChanged                                             3
  VornCommsManager.notifyCallAction                                                        1
  VornEMPAdapterControl: getEMPAdapter, asked before each command                 16
  Together                                                                       122     137
