Output that cannot be written: every program says so and ends with 1.

  $ touch trace
  $ echo 'section "nothing"' > nothing.scenario
  $ while read -r command; do
  >   for output in /dev/full '&-'; do
  >     sh -c "$command >$output" 2> said < /dev/null
  >     echo "$? $(tail -n 1 said)"
  >   done
  > done <<END
  > vorn-speaker --help
  > vorn-speaker --version
  > vorn-speaker --list
  > vorn-speaker --state state nothing.scenario
  > vorn-speaker --state state --host $GOOD_HOST nothing.scenario
  > vorn-log --help
  > vorn-log --version
  > vorn-log --count $LIBRARY
  > vorn-conformance --help
  > vorn-conformance --version
  > vorn-conformance --list
  > vorn-conformance --only getVolume $GOOD_HOST
  > vorn-capture --help
  > vorn-capture --version
  > abi-check --help
  > abi-check $LIBRARY $LIBRARY
  > END
  1 vorn-speaker: standard output could not be written; is the disk full?
  1 vorn-speaker: standard output could not be written; it is closed
  1 vorn-speaker: standard output could not be written; is the disk full?
  1 vorn-speaker: standard output could not be written; it is closed
  1 vorn-speaker: standard output could not be written; is the disk full?
  1 vorn-speaker: standard output could not be written; it is closed
  1 vorn-speaker: standard output could not be written; is the disk full?
  1 vorn-speaker: standard output could not be written; it is closed
  1 vorn-speaker: standard output could not be written; is the disk full, or did the host close it?
  1 vorn-speaker: standard output could not be written; is the disk full, or did the host close it?
  1 vorn-log: standard output could not be written; is the disk full?
  1 vorn-log: standard output could not be written; it is closed
  1 vorn-log: standard output could not be written; is the disk full?
  1 vorn-log: standard output could not be written; it is closed
  1 vorn-log: standard output could not be written; is the disk full?
  1 vorn-log: standard output could not be written; it is closed
  1 vorn-conformance: standard output could not be written; is the disk full?
  1 vorn-conformance: standard output could not be written; it is closed
  1 vorn-conformance: standard output could not be written; is the disk full?
  1 vorn-conformance: standard output could not be written; it is closed
  1 vorn-conformance: standard output could not be written; is the disk full?
  1 vorn-conformance: standard output could not be written; it is closed
  1 vorn-conformance: standard output could not be written; is the disk full?
  1 vorn-conformance: standard output could not be written; it is closed
  1 vorn-capture: standard output could not be written; is the disk full?
  1 vorn-capture: standard output could not be written; it is closed
  1 vorn-capture: standard output could not be written; is the disk full?
  1 vorn-capture: standard output could not be written; it is closed
  1 abi-check: the answer cannot be written: No space left on device
  1 abi-check: the answer cannot be written: Bad file descriptor
  1 abi-check: the answer cannot be written: No space left on device
  1 abi-check: the answer cannot be written: Bad file descriptor
