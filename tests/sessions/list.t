Every operation, with its arguments.

  $ vorn-speaker --list
  assistant
    VornAlexaState.alexaStateChanged state
        state: a text
    VornAlexaState.dialogUXStateChanged state
        state: a text
    VornAlexaState.notifyMainAppInitialized
    VornAppMessaging.sendAppMessage first second third
        first: a text
        second: a text
        third: a text
    VornAudioFocus.requestAudioFocus
    VornAudioFocus.releaseAudioFocus
    VornAudioIn.startStreamingAudioData
    VornAudioIn.stopStreamingAudioData
    VornAudioIn.isMicrophoneAvailable
    VornAudioIn.setAlexaHandsFreeState enabled
        enabled: true or false
    VornAudioIn.notifyAlexaInvocationDetected invocationType
        invocationType: a text
    VornMediaPlayerFactory.createDalMediaPlayer name firstFlag secondFlag
        name: a text
        firstFlag: true or false
        secondFlag: true or false
    VornAttachmentReaderContainerFactory.createAttachmentReaderContainer
    VornAttachmentReaderContainerInterfaceImpl.sendData file
        file: a text
    VornAttachmentReaderContainerInterfaceImpl.notifyEndOfStream
    VornDeviceCapabilities.onChangeChannel channel
        channel: a text
    VornDeviceCapabilities.onInputChange input
        input: a text
    VornDeviceCapabilities.onSkipChannel count
        count: a whole number
    VornDeviceCapabilities.onSendKeystroke keystroke
        keystroke: a text
    VornDeviceCapabilities.onChangePlaybackPlay payload
        payload: a text
    VornDeviceCapabilities.onChangePlaybackPause payload
        payload: a text
    VornDeviceCapabilities.onChangePlaybackStop payload
        payload: a text
    VornDeviceCapabilities.onChangePlaybackStartOver payload
        payload: a text
    VornDeviceCapabilities.onChangePlaybackPrevious payload
        payload: a text
    VornDeviceCapabilities.onChangePlaybackNext payload
        payload: a text
    VornDeviceCapabilities.onChangePlaybackRewind payload
        payload: a text
    VornDeviceCapabilities.onChangePlaybackFastForward payload
        payload: a text
    VornDeviceCapabilities.onSearchAndPlay payload
        payload: a text
    VornDeviceCapabilities.onSearchAndDisplayResults payload
        payload: a text
    VornDeviceCapabilities.onSetMode mode value
        mode: a text
        value: a text
    VornDeviceCapabilities.onAdjustMode mode delta
        mode: a text
        delta: a whole number
    VornDeviceCapabilities.onSetPowerState on
        on: true or false
    VornDeviceCapabilities.onSetPowerState on target
        on: true or false
        target: a text
    VornDeviceCapabilities.onSetRangeValue value
        value: a number
    VornDeviceCapabilities.onAdjustRangeValue delta
        delta: a number
    VornDeviceCapabilities.onSetToggleState toggle state
        toggle: a text
        state: a text
    VornDeviceCapabilities.onLaunchTarget target
        target: a text
    VornDeviceCapabilities.onStartRecording
    VornDeviceCapabilities.onStopRecording
    VornDeviceCapabilities.onAdjustSeekPosition delta
        delta: a whole number
    VornDeviceCapabilities.onSetVolume volume
        volume: a whole number
    VornDeviceCapabilities.onAdjustVolume delta
        delta: a whole number
    VornDeviceCapabilities.onMute mute
        mute: true or false
    VornDeviceInfo.getVolume
    VornDeviceInfo.getMuteStatus
    VornDeviceInfo.getTimezone
    VornDeviceInfo.getDeviceLocale
    VornDeviceInfo.changeAlexaLocale locale
        locale: a text
    VornDeviceInfo.getDeviceInformation
    VornDeviceInfo.getNetworkConnectionStatus
    VornDeviceInfo.updateInternetConnectionStatus connected
        connected: true or false
    VornDeviceInfo.getConfigData key
        key: a text
    VornDeviceInfo.getSystemSetting key [value]
        key: a text
        value: a text
    VornDeviceInfo.setSystemSetting key value
        key: a text
        value: a text
    VornDeviceInfo.getVSKCapabilities
    VornGUIOutput.clearGUICard
    VornGUIOutput.renderGUICard card
        card: a text
    VornLEDController.setAnimation animations
        animations: a list such as [en-US, de-DE]
    VornLoggerObserver.onLogEmitted first second
        first: a text
        second: a text
    VornOOBE.sendCBLInfo [first] [second] [number]
        first: a text
        second: a text
        number: a whole number
    VornOOBE.alexaAuthStatusChanged status
        status: a text
    VornStorage.open
    VornStorage.readKeyValue key
        key: a text
    VornStorage.writeKeyValue entries
        entries: a set such as {alarm=07:00, city=Oslo}
    VornStorage.removeKeyValue keys
        keys: a list such as [en-US, de-DE]
    VornStorage.clear
    VornEMPAdapterControl.login accessToken userName forceLogin refreshInterval playerId
        accessToken: a text
        userName: a text
        forceLogin: true or false
        refreshInterval: a duration such as 500ms or 2s
        playerId: a text
    VornEMPAdapterControl.logout playerId
        playerId: a text
    VornEMPAdapterControl.launchAndPlay playContextToken offset playerId
        playContextToken: a text
        offset: a duration such as 500ms or 2s
        playerId: a text
    VornEMPAdapterControl.nextTrack playerId
        playerId: a text
    VornEMPAdapterControl.previousTrack playerId
        playerId: a text
    VornEMPAdapterControl.restartCurrentTrack playerId
        playerId: a text
    VornEMPAdapterControl.setShuffleOn playerId
        playerId: a text
    VornEMPAdapterControl.setShuffleOff playerId
        playerId: a text
    VornEMPAdapterControl.resume playerId
        playerId: a text
    VornEMPAdapterControl.pause playerId
        playerId: a text
    VornEMPAdapterControl.stop playerId
        playerId: a text
    VornEMPAdapterControl.skipForward offset playerId
        offset: a duration such as 500ms or 2s
        playerId: a text
    VornEMPAdapterControl.setRepeatAll playerId
        playerId: a text
    VornEMPAdapterControl.setRepeatNone playerId
        playerId: a text
    VornEMPAdapterControl.setRepeatOne playerId
        playerId: a text
    VornEMPAdapterControl.getPlaybackState playerId
        playerId: a text
    VornCommsManager.onCommsStateChanged info
        info: a communications state
  firmware
    VornAppMessaging.SendMessageToxApp first second third
        first: a text
        second: a text
        third: a text
    VornAudioIn.notifyAlexaButtonPress type duration
        type: a text
        duration: a duration such as 500ms or 2s
    VornAudioIn.notifyAlexaButtonReleased
    VornAudioIn.sendAudioData samples
        samples: samples such as [0, 120, -120]
    VornAttachmentReaderContainerInterfaceImpl.Subscribe player
        player: a text
    VornAttachmentReaderContainerInterfaceImpl.Unsubscribe
    VornAttachmentReaderContainerInterfaceImpl.GetOnCloseCallbackFunction reason
        reason: a text
    VornDeviceCapabilities.notifyUpdatedAssociation first second
        first: a text
        second: a text
    VornDeviceCapabilities.notifyFriendlyNameChange friendlyName
        friendlyName: a text
    VornDeviceInfo.notifySystemSettingChanged key value
        key: a text
        value: a text
    VornDeviceInfo.notifyLocaleChange locale
        locale: a text
    VornDeviceInfo.notifyLocaleChange locales
        locales: a list such as [en-US, de-DE]
    VornDeviceInfo.notifyNetworkConnectionChanged status
        status: a text
    VornDeviceInfo.notifyMicrophoneAvailabilityChanged availability
        availability: a text
    VornDeviceInfo.notifyVolumeChanged volume
        volume: a whole number
    VornDeviceInfo.notifyMuteChanged muted
        muted: true or false
    VornDeviceInfo.notifyHandsfreeStateChanged state
        state: true or false
    VornGUIOutput.notifyPlaybackControllerAction action
        action: a text
    VornOOBE.notifyOOBEInitiated
    VornOOBE.notifyOOBECancelled
    VornOOBE.getAlexaAuthStatus
    VornCommsManager.notifyCallAction action
        action: a call action's number
