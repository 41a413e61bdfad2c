Statements typed by a program.

  $ vorn-speaker --state state console <<'END'
  > help
  > help assistant
  > help getVolume
  > help VornDeviceInfo.notifyLocaleChange
  > help nothing
  > assistant VornDeviceInfo.getVolume
  > expect 31
  > assistant VornDeviceInfo.getVolum
  > assistant VornEMPAdapterControl.login hidden ada true 1s music
  > save
  > save a b
  > save saved.scenario
  > save saved.scenario
  > save "torn\x1b.scenario"
  > quit now
  > quit
  > assistant VornDeviceInfo.getTimezone
  > END
    assistant ADAPTER.OPERATION ARGUMENT...
        the assistant client calls an adapter (down)
    firmware ADAPTER.OPERATION ARGUMENT...
        the firmware calls an adapter (up)
    together COUNT ADAPTER.OPERATION ARGUMENT...
        so many threads of the assistant client make the call at once; their results, if they differ, are separated by semicolons
    expect RESULT
        the last call gave this result, as it is printed
    expect call ADAPTER.OPERATION [ARGUMENT...] [within DURATION]
        the last call led to this one, with exactly these arguments if any are told; `within` waits for it
    expect no call [ADAPTER.OPERATION [ARGUMENT...]]
        the last call led to none, or not to this one
    expect heard SAMPLES|some [within DURATION]
        what the assistant side has heard so far; `within` waits for it
    expect trace TEXT
        a line that the library traced since the start holds the text
    expect every operation
        every operation has been called by now
    remove AREA
        takes an object of the assistant side away: `DeviceInfo`, `DeviceCapabilities`, `GUIOutput`, `OOBE`, `AudioIn`, `AppMessaging`, `CommsManager` or `all`; `adapters` shuts the library's own down, `trace` has the trace file not be written
    create AREA
        brings it back
    answer QUESTION VALUE
        what the assistant side answers: `authStatus` a text, `messageAccepted` and `playbackActionAccepted` a flag
    delay ADAPTER.OPERATION DURATION
        from now on calls of the operation wait so long where they arrive, before they are answered
    fail ADAPTER.OPERATION TEXT
        from now on calls of the operation throw this text where they arrive
    restore ADAPTER.OPERATION
        ends both
    wait microphone
        until the microphone has delivered its sound
    section TITLE
        prints a heading
    help OPERATION
        its arguments
    save FILE
        the lines so far, as a scenario
    quit
    assistant VornDeviceInfo.getVolume
    firmware VornDeviceInfo.notifyLocaleChange locale
        locale: a text
    firmware VornDeviceInfo.notifyLocaleChange locales
        locales: a list such as [en-US, de-DE]
    down  assistant   VornDeviceInfo              getVolume() = 30
    expected the result 31, saw 30
    assistant
              ^ expected an operation of the assistant, found VornDeviceInfo.getVolum; did you mean VornDeviceInfo.getVolume?
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       login(********, ada, true, 1000ms, music) = true
    save
        ^ expected a file: save FILE
    save
            ^ expected a file: save FILE
    3 lines in saved.scenario
    3 lines in saved.scenario
    3 lines in torn\x1b.scenario
  [1]
  $ cat saved.scenario
  assistant VornDeviceInfo.getVolume
  expect 31
  assistant VornEMPAdapterControl.login ******** ada true 1s music
  $ vorn-speaker --state state console < /dev/null
The assistant side away, faults put in the way, several threads.

  $ vorn-speaker --state state console <<'END' | sed 's/assistant [12] /assistant N /'
  > remove DeviceInfo
  > firmware VornDeviceInfo.notifyVolumeChanged 3
  > create DeviceInfo
  > firmware VornDeviceInfo.notifyVolumeChanged 3
  > remove adapters
  > assistant VornDeviceInfo.getVolume
  > create adapters
  > fail VornDeviceInfo.getVolume "no amplifier"
  > assistant VornDeviceInfo.getVolume
  > restore VornDeviceInfo.getVolume
  > together 2 VornDeviceInfo.getVolume
  > answer authStatus UNAUTHORIZED
  > firmware VornOOBE.getAlexaAuthStatus
  > answer messageAccepted false
  > firmware VornAppMessaging.SendMessageToxApp a b c
  > answer playbackActionAccepted false
  > firmware VornGUIOutput.notifyPlaybackControllerAction NEXT
  > section "A title"
  > END
          VornDeviceInfo.notifyVolumeChanged was dropped
    up    firmware    VornDeviceInfo              notifyVolumeChanged(3)
          VornDeviceInfo.getVolume gave no instance
    down  assistant   VornDeviceInfo              getVolume() threw no amplifier
          VornDeviceInfo.getVolume gave threw no amplifier
    down  assistant N  VornDeviceInfo              getVolume() = 30
    down  assistant N  VornDeviceInfo              getVolume() = 30
    up    firmware    VornOOBE                    getAlexaAuthStatus() = UNAUTHORIZED
    up    firmware    VornAppMessaging            SendMessageToxApp(a, b, c) = false
    up    firmware    VornGUIOutput               notifyPlaybackControllerAction(NEXT) = false
  
  A title
What the device refuses, and what it makes of the edges.

  $ vorn-speaker --state state console <<'END' | LC_ALL=C.UTF-8 iconv -t ASCII//TRANSLIT
  > assistant VornStorage.readKeyValue city
  > assistant VornStorage.open
  > assistant VornDeviceCapabilities.onSetVolume 101
  > assistant VornDeviceCapabilities.onSetVolume -1
  > assistant VornDeviceCapabilities.onAdjustVolume 1000
  > assistant VornDeviceCapabilities.onAdjustVolume -1000
  > assistant VornDeviceCapabilities.onMute false
  > assistant VornDeviceCapabilities.onChangeChannel ""
  > assistant VornDeviceCapabilities.onSkipChannel -20
  > assistant VornDeviceCapabilities.onInputChange "HDMI 9"
  > assistant VornDeviceCapabilities.onSetMode picture none
  > assistant VornDeviceCapabilities.onSetMode none cinema
  > assistant VornDeviceCapabilities.onAdjustMode picture 1
  > assistant VornDeviceCapabilities.onAdjustMode brightness 100
  > assistant VornDeviceCapabilities.onSetRangeValue 11
  > assistant VornDeviceCapabilities.onAdjustRangeValue -100
  > assistant VornDeviceCapabilities.onSetToggleState subtitles MAYBE
  > assistant VornDeviceCapabilities.onSetToggleState none ON
  > assistant VornDeviceCapabilities.onSetPowerState false
  > assistant VornDeviceCapabilities.onAdjustSeekPosition -99999
  > assistant VornDeviceCapabilities.onStopRecording
  > assistant VornDeviceCapabilities.onSendKeystroke NONE
  > assistant VornDeviceCapabilities.onLaunchTarget ""
  > assistant VornDeviceInfo.setSystemSetting none x
  > assistant VornDeviceInfo.getSystemSetting none
  > assistant VornDeviceInfo.getConfigData none
  > assistant VornDeviceInfo.changeAlexaLocale xx
  > assistant VornDeviceInfo.getDeviceLocale
  > assistant VornEMPAdapterControl.pause music
  > assistant VornEMPAdapterControl.launchAndPlay token 0ms nobody
  > assistant VornEMPAdapterControl.login t u true 1s nobody
  > assistant VornEMPAdapterControl.getPlaybackState music
  > assistant VornLEDController.setAnimation [none]
  > assistant VornGUIOutput.renderGUICard "no card"
  > assistant VornGUIOutput.renderGUICard "{\"title\":\"T\"}"
  > assistant VornStorage.readKeyValue city
  > assistant VornStorage.writeKeyValue {}
  > assistant VornStorage.writeKeyValue {city=Oslo, "a\x00b"="c\nd"}
  > assistant VornStorage.readKeyValue city
  > assistant VornStorage.readKeyValue "a\x00b"
  > assistant VornStorage.removeKeyValue [city, none]
  > assistant VornStorage.readKeyValue city
  > assistant VornStorage.clear
  > assistant VornStorage.readKeyValue "a\x00b"
  > assistant VornCommsManager.onCommsStateChanged ANYTHING
  > assistant VornAlexaState.alexaStateChanged ANYTHING
  > assistant VornAudioIn.startStreamingAudioData
  > wait microphone
  > assistant VornAudioIn.stopStreamingAudioData
  > assistant VornAudioIn.stopStreamingAudioData
  > END
    down  assistant   VornStorage                 readKeyValue(city) ...
      state/store.sqlite: not open; call open() first
    down  assistant   VornStorage                 ... readKeyValue = {}
    down  assistant   VornStorage                 open() = true
    down  assistant   VornDeviceCapabilities      onSetVolume(101) = false volume goes from 0 to 100
    down  assistant   VornDeviceCapabilities      onSetVolume(-1) = false volume goes from 0 to 100
    down  assistant   VornDeviceCapabilities      onAdjustVolume(1000) ...
    up    assistant   VornDeviceInfo                notifyVolumeChanged(100)
    down  assistant   VornDeviceCapabilities      ... onAdjustVolume = true volume 100
    down  assistant   VornDeviceCapabilities      onAdjustVolume(-1000) ...
    up    assistant   VornDeviceInfo                notifyVolumeChanged(0)
    down  assistant   VornDeviceCapabilities      ... onAdjustVolume = true volume 0
    down  assistant   VornDeviceCapabilities      onMute(false) ...
    up    assistant   VornDeviceInfo                notifyMuteChanged(false)
    down  assistant   VornDeviceCapabilities      ... onMute = true unmuted
    down  assistant   VornDeviceCapabilities      onChangeChannel() = false no channel named
    down  assistant   VornDeviceCapabilities      onSkipChannel(-20) = true channel 1
    down  assistant   VornDeviceCapabilities      onInputChange(HDMI 9) = true
    down  assistant   VornDeviceCapabilities      onSetMode(picture, none) = true mode picture none
    down  assistant   VornDeviceCapabilities      onSetMode(none, cinema) = true mode none cinema
    down  assistant   VornDeviceCapabilities      onAdjustMode(picture, 1) = false mode picture has no number
    down  assistant   VornDeviceCapabilities      onAdjustMode(brightness, 100) = false mode brightness has no number
    down  assistant   VornDeviceCapabilities      onSetRangeValue(11) = false range goes from 0 to 10
    down  assistant   VornDeviceCapabilities      onAdjustRangeValue(-100) = true range 0
    down  assistant   VornDeviceCapabilities      onSetToggleState(subtitles, MAYBE) = false a toggle is ON or OFF
    down  assistant   VornDeviceCapabilities      onSetToggleState(none, ON) = true toggle none ON
    down  assistant   VornDeviceCapabilities      onSetPowerState(false) = true power OFF
    down  assistant   VornDeviceCapabilities      onAdjustSeekPosition(-99999) = true position 0 s
    down  assistant   VornDeviceCapabilities      onStopRecording() = false not recording
    down  assistant   VornDeviceCapabilities      onSendKeystroke(NONE) = true keystroke NONE
    down  assistant   VornDeviceCapabilities      onLaunchTarget() = true launched 
    down  assistant   VornDeviceInfo              setSystemSetting(none, x) = false
    down  assistant   VornDeviceInfo              getSystemSetting(none, ) = false
    down  assistant   VornDeviceInfo              getConfigData(none)
    down  assistant   VornDeviceInfo              changeAlexaLocale(xx)
    down  assistant   VornDeviceInfo              getDeviceLocale() = xx
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       pause(music) = false
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       launchAndPlay(********, 0ms, nobody) = false
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       login(********, u, true, 1000ms, nobody) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       getPlaybackState(music) = {"player":"music","position":0,"repeat":"NONE","shuffle":false,"state":"STOPPED","title":"Morning Light","track":1,"user":"u"}
    down  assistant   VornLEDController           setAnimation([none]) ...
      ( ???????????? )  none
    down  assistant   VornLEDController           ... setAnimation = 1
    down  assistant   VornGUIOutput               renderGUICard(no card) ...
      + card ----------------------------------------------------+
      | no card                                                  |
      +----------------------------------------------------------+
    down  assistant   VornGUIOutput               ... renderGUICard = true
    down  assistant   VornGUIOutput               renderGUICard({"title":"T"}) ...
      + T -------------------------------------------------------+
      | {"title":"T"}                                            |
      +----------------------------------------------------------+
    down  assistant   VornGUIOutput               ... renderGUICard = true
    down  assistant   VornStorage                 readKeyValue(city) = {}
    down  assistant   VornStorage                 writeKeyValue({}) = true
    down  assistant   VornStorage                 writeKeyValue({a\x00b=c\nd, city=Oslo}) = true
    down  assistant   VornStorage                 readKeyValue(city) = {city=Oslo}
    down  assistant   VornStorage                 readKeyValue(a\x00b) = {a\x00b=c\nd}
    down  assistant   VornStorage                 removeKeyValue([city, none]) = true
    down  assistant   VornStorage                 readKeyValue(city) = {}
    down  assistant   VornStorage                 clear() = true
    down  assistant   VornStorage                 readKeyValue(a\x00b) = {}
    down  assistant   VornCommsManager            onCommsStateChanged(ANYTHING) ...
      + Call ----------------------------------------------------+
      | ANYTHING                                                 |
      +----------------------------------------------------------+
    down  assistant   VornCommsManager            ... onCommsStateChanged
    down  assistant   VornAlexaState              alexaStateChanged(ANYTHING)
    down  assistant   VornAudioIn                 startStreamingAudioData() = true
    up    microphone  VornAudioIn                 sendAudioData([160 samples])
    up    microphone  VornAudioIn                 ... 109 more of sendAudioData
    down  assistant   VornAudioIn                 stopStreamingAudioData()
    down  assistant   VornAudioIn                 stopStreamingAudioData()

A secret that was given once is hidden in what is wrong and in what is saved, also beside another one.

  $ vorn-speaker --state hidden --no-trace console <<'END'
  > assistant VornEMPAdapterControl.login Qx7Zr9Lm2 ada true 1s m
  > assistant VornEMPAdapterControl.launchAndPlay ctx 5s Qx7Zr9Lm2
  > assistant VornStorage.writeKeyValue {psk=other, a=Qx7Zr9Lm2}
  > assistant VornStorage.writeKeyValue {psk=other, a=Oslo}
  > assistant VornDeviceInfo.getVolume Qx7Zr9Lm2
  > remove Qx7Zr9Lm2
  > save none/Qx7Zr9Lm2
  > save saved
  > END
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       login(********, ada, true, 1000ms, m) = true
    down  assistant   VornEMPAdapterControl       getEMPAdapter() = object
    down  assistant   VornEMPAdapterControl       launchAndPlay(********, 5000ms, ********) = true
    down  assistant   VornStorage                 writeKeyValue(********) ...
      ********
    down  assistant   VornStorage                 ... writeKeyValue = false
    down  assistant   VornStorage                 writeKeyValue({a=Oslo, psk=********}) ...
      ********
    down  assistant   VornStorage                 ... writeKeyValue = false
    assistant VornDeviceInfo.getVolume
                                       ^ expected the end of the line after VornDeviceInfo.getVolume, found ********
    remove
           ^ expected one of all, DeviceInfo, DeviceCapabilities, GUIOutput, OOBE, AudioIn, AppMessaging, CommsManager, adapters, trace, found ********
    ********
    4 lines in saved
  [1]
  $ cat saved
  assistant VornEMPAdapterControl.login ******** ada true 1s m
  # ********
  # ********
  assistant VornStorage.writeKeyValue {a=Oslo, psk=********}

A player is made under the name that the statement has.

  $ vorn-speaker --state made --no-trace console <<'END'
  > assistant VornMediaPlayerFactory.createDalMediaPlayer SpeechPlayer true false
  > expect call VornMediaPlayerFactory.createDalMediaPlayer SpeechPlayer true false
  > expect no call VornMediaPlayerFactory.createDalMediaPlayer
  > fail VornMediaPlayerFactory.createDalMediaPlayer "out of order"
  > assistant VornMediaPlayerFactory.createDalMediaPlayer SpeechPlayer true false
  > END
    down  assistant   VornMediaPlayerFactory      Configure(SpeechPlayer, true, false)
    expected no call VornMediaPlayerFactory.createDalMediaPlayer, saw VornMediaPlayerFactory.createDalMediaPlayer SpeechPlayer true false
    down  assistant   VornMediaPlayerFactory      Configure(SpeechPlayer, true, false) threw out of order
          VornMediaPlayerFactory.createDalMediaPlayer gave threw out of order
  [1]
