# bash completion for qvn(1) and qvn-sim(1). Words that depend on the machine are asked of qvn, which reads them
# from the registry without talking to a device.

_qvn_verbs="install uninstall transport device discover print status cache watch npa scan esc hid store get set host monitor
  settings registry log"

# The words after a verb that has verbs of its own.
_qvn_subverbs() {
  case $1 in
    transport) echo "add remove list" ;;
    device) echo "list show remove add" ;;
    settings) echo "list get set unset" ;;
    host) echo "get set" ;;
    monitor) echo "add" ;;
    hid) echo "watch" ;;
    store) echo "call watch" ;;
    registry) echo "export import" ;;
    log) echo "status on off show follow path" ;;
  esac
}

# The options of a verb, as its help has them.
_qvn_options() {
  qvn $1 --help 2>/dev/null | sed -n 's/^  \(-.,\)\{0,1\}\(--[a-z-]*\).*/\2/p'
}

# The names of attributes, which can have blanks.
_qvn_attributes() {
  qvn get --help 2>/dev/null | sed '1,/^Attributes:/d; s/,$//' | tr ',' '\n' | sed 's/^ *//'
}

# The values of a member in a listing, one a line.
_qvn_listed() {
  local member=$1
  shift
  qvn "$@" --json 2>/dev/null | sed -n "s/^ *\"$member\": \"\{0,1\}\([^\",]*\)\"\{0,1\},\{0,1\}\$/\1/p" |
    grep -vx null
}

# The kind of device that a verb takes.
_qvn_kind() {
  case $1 in
    scan | esc | store) echo scanner ;;
    hid) echo hid ;;
    *) echo printer ;;
  esac
}

# The handles and port names of the stored devices of a kind.
_qvn_listed_named() {
  _qvn_listed handle device list --kind "$1"
  _qvn_listed portname device list --kind "$1"
}

# The lines of standard input that begin with the word, quoted for the shell.
_qvn_offer() {
  local line quoted
  while IFS= read -r line; do
    [[ $line == "$1"* ]] || continue
    printf -v quoted %q "$line"
    COMPREPLY+=("$quoted")
  done
}

_qvn_words() { _qvn_offer "$cur" < <(printf '%s\n' $1); }

_qvn() {
  local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local verb= path= word i
  COMPREPLY=()
  # The verb, and the verb below it.
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    [[ $word == -* ]] && continue
    if [[ -z $verb ]]; then
      verb=$word path=$word
      [[ -n $(_qvn_subverbs "$verb") ]] || break
    else
      path="$verb $word"
      break
    fi
  done

  case $previous in
    --device | -d) _qvn_offer "$cur" < <(_qvn_listed_named "$(_qvn_kind "$verb")") ;;
    --kind) _qvn_words "printer scanner hid" ;;
    --mode) _qvn_words "bw gray color" ;;
    --source) _qvn_words "flatbed feeder" ;;
    --pages) _qvn_words "all" ;;
    --output | -o) compopt -o default 2>/dev/null ;;
    --family) _qvn_words "CpdPrinter BpdPrinter CpdScanner BpdScanner CpdHid" ;;
    --transport)
      _qvn_words "LOCAL_TRANSPORT NETWORK_TRANSPORT ALL_TRANSPORT"
      _qvn_offer "$cur" < <(_qvn_listed name transport list)
      ;;
    --handle | --address | --portname | --port-type | --set | --user | --job | --key | --lines | --since | --count | --copies | -n | --dpi | --area | --timeout) ;;
    *)
      if [[ $cur == -* ]]; then
        _qvn_words "$(_qvn_options "$path")"
        return
      fi
      case $path in
        "") _qvn_words "$_qvn_verbs" ;;
        transport | device | settings | host | monitor | hid | store | registry | log) _qvn_words "$(_qvn_subverbs "$path")" ;;
        "transport remove") _qvn_offer "$cur" < <(_qvn_listed name transport list) ;;
        "device show" | "device remove")
          _qvn_offer "$cur" < <({ _qvn_listed handle device list; _qvn_listed portname device list; } | sort -u)
          ;;
        get | set) [[ $previous == "$path" ]] && _qvn_offer "$cur" < <(_qvn_attributes) ;;
        "host get" | "host set") [[ $previous == [gs]et ]] && _qvn_words "PcName PinNumber CodePage" ;;
        "settings get" | "settings set" | "settings unset") _qvn_offer "$cur" < <(_qvn_listed name settings list) ;;
        print | scan | "transport add" | "registry export" | "registry import") compopt -o default 2>/dev/null ;;
      esac
      ;;
  esac
}

_qvn_sim() {
  local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    --jobs | --trace | --page | --scans | --script) compopt -o default 2>/dev/null ;;
    --fault)
      compopt -o nospace 2>/dev/null
      _qvn_words "delay-reply= late-reply= drop-reply= corrupt-reply= misframe-reply= double-reply= reject= close-bidi=
        busy never-finish slow-print= close-mid-job= slow-discovery= status-early= status-late= status-twice status-never
        wrong-length= stop-page= close-mid-page= slow-scan= ignore-abort no-data read-error= oversize-reply= wrong-id=
        host-mode-fail host-mode-stay usb-stall= usb-unplug= usb-short= usb-zero usb-babble usb-no-id usb-little-id
        usb-empty-id"
      ;;
    --family) _qvn_words "CpdPrinter BpdPrinter" ;;
    --model | --serial | --name | --address | --*-port | --print-time | --cancel-run | --feeder | --block) ;;
    *)
      _qvn_words "--family --model --serial --name --address --discovery-port --print-port --bidi-port --scan-port --hid-port
        --usb --plain --printer-only --jobs --discard --print-time --cancel-run --page --feeder --block --framed --scans --script --trace --events --quit-on-eof --fault --version --help"
      ;;
  esac
}

complete -F _qvn qvn
complete -F _qvn_sim qvn-sim
