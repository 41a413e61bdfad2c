A scenario with many mistakes, each told with its place, what was expected and what was found.

  $ cat > bad.scenario <<'END'
  > asistant VornDeviceInfo.getVolume
  > assistant
  > assistant getVolume
  > assistant VornDeviceInfo.getVolumes
  > assistant VornDeviceInfo.notifyVolumeChanged 3
  > firmware VornDeviceInfo.getVolume
  > firmware VornDeviceInfo.notifyVolumeChanged
  > firmware VornDeviceInfo.notifyVolumeChanged three
  > firmware VornDeviceInfo.notifyVolumeChanged 3 4
  > firmware VornDeviceInfo.notifyVolumeChanged 99999999999
  > firmware VornDeviceInfo.notifyVolumeChanged 1.5
  > firmware VornDeviceInfo.notifyMuteChanged maybe
  > firmware VornDeviceInfo.notifyLocaleChange [en-GB, nb-NO
  > firmware VornDeviceInfo.notifyLocaleChange [en-GB nb-NO]
  > firmware VornDeviceInfo.notifyLocaleChange [en-GB,, nb-NO]
  > assistant VornStorage.writeKeyValue {city}
  > assistant VornStorage.writeKeyValue {city=Oslo, city=Rome}
  > assistant VornStorage.writeKeyValue {city=Oslo
  > assistant VornStorage.writeKeyValue [city]
  > assistant VornStorage.readKeyValue "no end
  > assistant VornStorage.readKeyValue "x\q"
  > assistant VornStorage.readKeyValue "x\x4"
  > assistant VornStorage.readKeyValue a"b
  > assistant VornStorage.readKeyValue "a"b
  > assistant VornStorage.readKeyValue a]b
  > assistant VornDeviceCapabilities.onAdjustRangeValue 1,5
  > assistant VornDeviceCapabilities.onSetPowerState perhaps
  > assistant VornDeviceCapabilities.onSetPowerState perhaps television
  > firmware VornDeviceInfo.notifyLocaleChange {en=GB}
  > assistant VornDeviceCapabilities.onAdjustRangeValue nan
  > assistant VornEMPAdapterControl.skipForward 10 music
  > assistant VornEMPAdapterControl.skipForward 10h music
  > firmware VornAudioIn.notifyAlexaButtonPress AlexaButtonPress soon
  > together VornDeviceInfo.getVolume
  > together 1 VornDeviceInfo.getVolume
  > together 65 VornDeviceInfo.getVolume
  > together 2 VornDeviceInfo.notifyVolumeChanged 3
  > expect
  > expect call
  > expect call VornDeviceInfo.getVolumes
  > expect call VornDeviceInfo.notifyVolumeChanged three
  > expect call VornDeviceInfo.getVolume within
  > expect call VornDeviceInfo.getVolume within 2
  > expect call VornDeviceInfo.getVolume within 25h
  > expect call VornDeviceInfo.getVolume within -1s
  > expect no
  > expect no call VornDeviceInfo.getVolumes
  > expect no call VornDeviceInfo.notifySystemSettingChanged within 2s
  > expect heard
  > expect heard -1
  > expect heard more
  > expect heard 3 4
  > expect trace
  > expect trace a b
  > expect every
  > expect every operation now
  > remove
  > remove Everything
  > remove all now
  > create DeviceInf
  > answer
  > answer authStats UNAUTHORIZED
  > answer authStatus
  > answer messageAccepted perhaps
  > answer messageAccepted true now
  > delay VornDeviceInfo.getVolume
  > delay VornDeviceInfo.getVolume soon
  > delay VornDeviceInfo.getVolume 2s now
  > fail VornDeviceInfo.getVolume
  > fail VornDeviceInfo.getVolume a b
  > restore
  > restore VornDeviceInfo.getVolume now
  > wait
  > wait loudspeaker
  > wait microphone now
  > section
  > section a b
  > assistant VornMediaPlayerFactory.createDalMediaPlayer
  > assistant VornAttachmentReaderContainerInterfaceImpl.sendData
  > END
  $ vorn-speaker --state state bad.scenario
  vorn-speaker: bad.scenario:1:1: expected one of assistant, firmware, together, expect, remove, create, answer, delay, fail, restore, wait, section, found asistant; did you mean assistant?
  bad.scenario:2:10: expected an operation such as VornDeviceInfo.getVolume
  bad.scenario:3:11: expected an operation of the assistant, found getVolume; did you mean VornDeviceInfo.getVolume?
  bad.scenario:4:11: expected an operation of the assistant, found VornDeviceInfo.getVolumes; did you mean VornDeviceInfo.getVolume?
  bad.scenario:5:11: VornDeviceInfo.notifyVolumeChanged is called by the firmware, not by the assistant
  bad.scenario:6:10: VornDeviceInfo.getVolume is called by the assistant, not by the firmware
  bad.scenario:7:44: expected volume, a whole number, in VornDeviceInfo.notifyVolumeChanged volume
  bad.scenario:8:45: expected a whole number, found three, in VornDeviceInfo.notifyVolumeChanged volume
  bad.scenario:9:47: expected the end of the line after VornDeviceInfo.notifyVolumeChanged volume, found 4
  bad.scenario:10:45: expected a whole number, found 99999999999, in VornDeviceInfo.notifyVolumeChanged volume
  bad.scenario:11:45: expected a whole number, found 1.5, in VornDeviceInfo.notifyVolumeChanged volume
  bad.scenario:12:43: expected true or false, found maybe, in VornDeviceInfo.notifyMuteChanged muted
  bad.scenario:13:44: expected a closing ]
  bad.scenario:16:42: expected = between a key and its value
  bad.scenario:17:37: expected every key once
  bad.scenario:18:37: expected a closing }
  bad.scenario:19:37: expected a set such as {alarm=07:00, city=Oslo}, found [city], in VornStorage.writeKeyValue entries
  bad.scenario:20:36: expected a closing "
  bad.scenario:21:38: expected one of the escapes \n \t \" \\ \x41
  bad.scenario:22:38: expected one of the escapes \n \t \" \\ \x41
  bad.scenario:24:39: expected a blank after the value
  bad.scenario:26:53: expected a number, found 1,5, in VornDeviceCapabilities.onAdjustRangeValue delta
  bad.scenario:27:50: expected true or false, found perhaps, in VornDeviceCapabilities.onSetPowerState on
  bad.scenario:28:50: expected true or false, found perhaps, in VornDeviceCapabilities.onSetPowerState on target
  bad.scenario:29:44: expected a text (in quotes if it begins with a bracket), in VornDeviceInfo.notifyLocaleChange locale
  bad.scenario:32:45: expected a duration such as 500ms or 2s, found 10h, in VornEMPAdapterControl.skipForward offset playerId
  bad.scenario:33:62: expected a duration such as 500ms or 2s, found soon, in VornAudioIn.notifyAlexaButtonPress type duration
  bad.scenario:34:10: expected a whole number, found VornDeviceInfo.getVolume
  bad.scenario:35:10: expected 2 to 64 threads, found 1
  bad.scenario:36:10: expected 2 to 64 threads, found 65
  bad.scenario:37:12: VornDeviceInfo.notifyVolumeChanged is called by the firmware, not by the assistant
  bad.scenario:38:7: expected the result, or call, no call, heard, trace or every operation
  bad.scenario:39:12: expected an operation such as VornDeviceInfo.getVolume
  bad.scenario:40:13: expected an operation, found VornDeviceInfo.getVolumes; did you mean VornDeviceInfo.getVolume?
  bad.scenario:41:48: expected a whole number, found three, in VornDeviceInfo.notifyVolumeChanged volume
  bad.scenario:42:38: expected the end of the line after VornDeviceInfo.getVolume, found within
  bad.scenario:44:45: expected a duration such as 500ms or 2s, found 25h
  bad.scenario:45:45: expected a duration of a day at most, found -1s
  bad.scenario:46:10: expected one of call
  bad.scenario:47:16: expected an operation, found VornDeviceInfo.getVolumes; did you mean VornDeviceInfo.getVolume?
  bad.scenario:48:65: expected no duration: it tells what the last call has led to by now; a text that is called within stands in quotes
  bad.scenario:49:13: expected a number of samples, or some
  bad.scenario:50:14: expected a number of samples, or some, found -1
  bad.scenario:51:14: expected a number of samples, or some, found more
  bad.scenario:52:16: expected the end of the line, found 4
  bad.scenario:53:13: expected a part of a trace line
  bad.scenario:54:16: expected the end of the line, found b
  bad.scenario:55:13: expected one of operation
  bad.scenario:56:24: expected the end of the line, found now
  bad.scenario:57:7: expected one of all, DeviceInfo, DeviceCapabilities, GUIOutput, OOBE, AudioIn, AppMessaging, CommsManager, adapters, trace
  bad.scenario:58:8: expected one of all, DeviceInfo, DeviceCapabilities, GUIOutput, OOBE, AudioIn, AppMessaging, CommsManager, adapters, trace, found Everything
  bad.scenario:59:12: expected the end of the line, found now
  bad.scenario:60:8: expected one of all, DeviceInfo, DeviceCapabilities, GUIOutput, OOBE, AudioIn, AppMessaging, CommsManager, adapters, trace, found DeviceInf; did you mean DeviceInfo?
  bad.scenario:61:7: expected one of authStatus, messageAccepted, playbackActionAccepted
  bad.scenario:62:8: expected one of authStatus, messageAccepted, playbackActionAccepted, found authStats; did you mean authStatus?
  bad.scenario:63:18: expected the answer
  bad.scenario:64:24: expected true or false, found perhaps
  bad.scenario:65:29: expected the end of the line, found now
  bad.scenario:66:31: expected a duration such as 500ms or 2s
  bad.scenario:67:32: expected a duration such as 500ms or 2s, found soon
  bad.scenario:68:35: expected the end of the line, found now
  bad.scenario:69:30: expected the text of the exception
  bad.scenario:70:33: expected the end of the line, found b
  bad.scenario:71:8: expected an operation such as VornDeviceInfo.getVolume
  bad.scenario:72:34: expected the end of the line, found now
  bad.scenario:73:5: expected one of microphone
  bad.scenario:74:6: expected one of microphone, found loudspeaker
  bad.scenario:75:17: expected the end of the line, found now
  bad.scenario:76:8: expected a title
  bad.scenario:77:11: expected the end of the line, found b
  bad.scenario:78:54: expected name, a text, in VornMediaPlayerFactory.createDalMediaPlayer name firstFlag secondFlag
  bad.scenario:79:62: expected file, a text, in VornAttachmentReaderContainerInterfaceImpl.sendData file
  [2]
The rest of very many is not read.

  $ for i in $(seq 102); do echo nonsense; done > many.scenario
  $ vorn-speaker --state state many.scenario 2>&1 | tail -n 2
  many.scenario:100:1: expected one of assistant, firmware, together, expect, remove, create, answer, delay, fail, restore, wait, section, found ********
  many.scenario: that is enough of mistakes, the rest was not read
  $ vorn-speaker --state state none.scenario
  vorn-speaker: none.scenario: cannot be read: No such file or directory
  [2]
  $ vorn-speaker --state state .
  vorn-speaker: .: cannot be read: Is a directory
  [2]
Expectations that are not met, one after the other.

  $ cat > unmet.scenario <<'END'
  > expect 3
  > assistant VornDeviceInfo.getVolume
  > expect 31
  > expect no call
  > expect no call VornDeviceInfo.getVolume
  > expect call VornDeviceInfo.getTimezone
  > assistant VornDeviceInfo.setSystemSetting channel "a b"
  > expect call VornDeviceInfo.setSystemSetting channel b
  > expect call VornDeviceInfo.setSystemSetting psk b
  > assistant VornEMPAdapterControl.login hidden ada true 1s music
  > expect call VornEMPAdapterControl.login other ada true 1s music
  > expect call VornEMPAdapterControl.login hidden ada true 1000ms music
  > expect heard 7
  > expect heard some
  > expect trace nothing
  > expect every operation
  > assistant VornAttachmentReaderContainerInterfaceImpl.sendData none.wav
  > assistant VornMediaPlayerFactory.createDalMediaPlayer Nobody true false
  > END
  $ vorn-speaker --state state --keep-going unmet.scenario
  unmet.scenario:1: expected the result 3, saw none
    down  assistant   VornDeviceInfo              getVolume() = 30
  unmet.scenario:3: expected the result 31, saw 30
  unmet.scenario:4: expected no call, saw VornDeviceInfo.getVolume
  unmet.scenario:5: expected no call VornDeviceInfo.getVolume, saw VornDeviceInfo.getVolume
  unmet.scenario:6: expected the call VornDeviceInfo.getTimezone, saw VornDeviceInfo.getVolume
    down  assistant   VornDeviceInfo              setSystemSetting(channel, a b) = false
  unmet.scenario:8: expected the call VornDeviceInfo.setSystemSetting channel b, saw VornDeviceInfo.setSystemSetting channel "a b"
  unmet.scenario:9: expected the call VornDeviceInfo.setSystemSetting psk ********, saw VornDeviceInfo.setSystemSetting channel "a b"
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       login(********, ada, true, 1000ms, music) = true
  unmet.scenario:11: expected the call VornEMPAdapterControl.login ******** ada true 1s music, saw VornEMPAdapterControl.getEMPAdapter; VornEMPAdapterControl.login ******** ada true 1000ms music
  unmet.scenario:13: expected 7 samples heard, saw 0
  unmet.scenario:14: expected some samples heard, saw 0
  unmet.scenario:15: expected a trace line with nothing, saw as the last line bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
  unmet.scenario:16: expected a call of every operation, saw none of VornAlexaState.alexaStateChanged, VornAlexaState.dialogUXStateChanged, VornAlexaState.notifyMainAppInitialized, VornAppMessaging.sendAppMessage, VornAppMessaging.SendMessageToxApp, VornAudioFocus.requestAudioFocus, VornAudioFocus.releaseAudioFocus, VornAudioIn.startStreamingAudioData, VornAudioIn.stopStreamingAudioData, VornAudioIn.isMicrophoneAvailable, VornAudioIn.setAlexaHandsFreeState, VornAudioIn.notifyAlexaInvocationDetected, VornAudioIn.notifyAlexaButtonPress, VornAudioIn.notifyAlexaButtonReleased, VornAudioIn.sendAudioData, VornMediaPlayerFactory.createDalMediaPlayer, VornAttachmentReaderContainerFactory.createAttachmentReaderContainer, VornAttachmentReaderContainerInterfaceImpl.Subscribe, VornAttachmentReaderContainerInterfaceImpl.Unsubscribe, VornAttachmentReaderContainerInterfaceImpl.sendData, VornAttachmentReaderContainerInterfaceImpl.notifyEndOfStream, VornAttachmentReaderContainerInterfaceImpl.GetOnCloseCallbackFunction, VornDeviceCapabilities.onChangeChannel, VornDeviceCapabilities.onInputChange, VornDeviceCapabilities.onSkipChannel, VornDeviceCapabilities.onSendKeystroke, VornDeviceCapabilities.onChangePlaybackPlay, VornDeviceCapabilities.onChangePlaybackPause, VornDeviceCapabilities.onChangePlaybackStop, VornDeviceCapabilities.onChangePlaybackStartOver, VornDeviceCapabilities.onChangePlaybackPrevious, VornDeviceCapabilities.onChangePlaybackNext, VornDeviceCapabilities.onChangePlaybackRewind, VornDeviceCapabilities.onChangePlaybackFastForward, VornDeviceCapabilities.onSearchAndPlay, VornDeviceCapabilities.onSearchAndDisplayResults, VornDeviceCapabilities.onSetMode, VornDeviceCapabilities.onAdjustMode, VornDeviceCapabilities.onSetPowerState on, VornDeviceCapabilities.onSetPowerState on target, VornDeviceCapabilities.onSetRangeValue, VornDeviceCapabilities.onAdjustRangeValue, VornDeviceCapabilities.onSetToggleState, VornDeviceCapabilities.onLaunchTarget, VornDeviceCapabilities.onStartRecording, VornDeviceCapabilities.onStopRecording, VornDeviceCapabilities.onAdjustSeekPosition, VornDeviceCapabilities.onSetVolume, VornDeviceCapabilities.onAdjustVolume, VornDeviceCapabilities.onMute, VornDeviceCapabilities.notifyUpdatedAssociation, VornDeviceCapabilities.notifyFriendlyNameChange, VornDeviceInfo.getMuteStatus, VornDeviceInfo.getTimezone, VornDeviceInfo.getDeviceLocale, VornDeviceInfo.changeAlexaLocale, VornDeviceInfo.getDeviceInformation, VornDeviceInfo.getNetworkConnectionStatus, VornDeviceInfo.updateInternetConnectionStatus, VornDeviceInfo.getConfigData, VornDeviceInfo.getSystemSetting, VornDeviceInfo.getVSKCapabilities, VornDeviceInfo.notifySystemSettingChanged, VornDeviceInfo.notifyLocaleChange locale, VornDeviceInfo.notifyLocaleChange locales, VornDeviceInfo.notifyNetworkConnectionChanged, VornDeviceInfo.notifyMicrophoneAvailabilityChanged, VornDeviceInfo.notifyVolumeChanged, VornDeviceInfo.notifyMuteChanged, VornDeviceInfo.notifyHandsfreeStateChanged, VornGUIOutput.clearGUICard, VornGUIOutput.renderGUICard, VornGUIOutput.notifyPlaybackControllerAction, VornLEDController.setAnimation, VornLoggerObserver.onLogEmitted, VornOOBE.sendCBLInfo, VornOOBE.alexaAuthStatusChanged, VornOOBE.notifyOOBEInitiated, VornOOBE.notifyOOBECancelled, VornOOBE.getAlexaAuthStatus, VornStorage.open, VornStorage.readKeyValue, VornStorage.writeKeyValue, VornStorage.removeKeyValue, VornStorage.clear, VornEMPAdapterControl.logout, VornEMPAdapterControl.launchAndPlay, VornEMPAdapterControl.nextTrack, VornEMPAdapterControl.previousTrack, VornEMPAdapterControl.restartCurrentTrack, VornEMPAdapterControl.setShuffleOn, VornEMPAdapterControl.setShuffleOff, VornEMPAdapterControl.resume, VornEMPAdapterControl.pause, VornEMPAdapterControl.stop, VornEMPAdapterControl.skipForward, VornEMPAdapterControl.setRepeatAll, VornEMPAdapterControl.setRepeatNone, VornEMPAdapterControl.setRepeatOne, VornEMPAdapterControl.getPlaybackState, VornCommsManager.onCommsStateChanged, VornCommsManager.notifyCallAction
          VornAttachmentReaderContainerInterfaceImpl.sendData gave no container
    down  assistant   VornMediaPlayerFactory      Configure(Nobody, true, false)
  
  What the library traced meanwhile
    trace VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()
    trace bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ********, userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: music
    trace VornMediaPlayerFactory::createDalMediaPlayer name=Nobody
  
  Calls that arrived                                                            down      up
  VornMediaPlayerFactory.createDalMediaPlayer                                      1
  VornDeviceInfo.getVolume                                                         1
  VornDeviceInfo.setSystemSetting                                                  1
  VornEMPAdapterControl.login                                                      1
  VornEMPAdapterControl: getEMPAdapter, asked before each command                  1
  Operations that no call reached (--all tells them)                                     101
  Together                                                                         5       0
  vorn-speaker: unmet.scenario: expectations that were not met: 12
  [1]
  $ vorn-speaker --state state unmet.scenario
  
  What the library traced meanwhile
    trace VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)
    trace VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)
  
  Calls that arrived                                                            down      up
  Operations that no call reached (--all tells them)                                     106
  Together                                                                         0       0
  vorn-speaker: unmet.scenario:1: expected the result 3, saw none
  [1]
  $ vorn-speaker --state state --no-trace --keep-going unmet.scenario | grep trace
  vorn-speaker: unmet.scenario: expectations that were not met: 11
          expect trace is passed over: the trace is off (--no-trace)
  What the library traced meanwhile
