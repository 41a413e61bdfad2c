# Completion of the tools in bash: their options as their --help names them, then what an option takes, then files.
_vorn_tool() {
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words= task=
  case ${COMP_WORDS[1]} in export | replay | report) task=${COMP_WORDS[1]} ;; esac
  case $before in
    --color) words='auto always never' ;;
    --format) words='trace-event mermaid csv' ;;
    -a | --adapter)
      words='VornAlexaState VornAppMessaging VornAttachmentReaderContainerFactory VornAudioFocus VornAudioIn
             VornCommsManager VornDeviceCapabilities VornDeviceInfo VornEMPAdapterControl VornGUIOutput
             VornLEDController VornLoggerObserver VornMediaPlayerFactory VornOOBE VornStorage'
      ;;
    *)
      if [[ $current == -* ]]; then
        words=$({ "$1" --help; ${task:+"$1" $task --help}; } 2>/dev/null | grep -oE -- '--[a-z]+(-[a-z]+)*')
      elif [[ $1 == *vorn-speaker && $COMP_CWORD == 1 ]]; then
        words='console record replay report export serve'
      fi
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current" | sort -u)
}
complete -o default -F _vorn_tool vorn-speaker vorn-log vorn-conformance vorn-capture
