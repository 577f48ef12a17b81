
# Sets `word` to what the shell would make of a word as it was typed. Nothing in it is ever run.
_moxel_read() {
  word=$1
  case $word in
    \'*) word=${word#\'} word=${word%\'} ;;
    \"*) word=${word#\"} word=${word%\"} word=${word//\\/} ;;
    '~/'*) word=$HOME/${word:2} word=${word//\\/} ;;
    *) word=${word//\\/} ;;
  esac
}

# Sets `slot` to what `word` is on the command line: "option", "verb", the name of the option that it is the
# value of, or the number of an argument.
_moxel_place() {
  if [[ $option ]]; then
    slot=$option option=
  elif [[ ! $only_arguments && ($word == -?* || ($word == - && $1 == "$COMP_CWORD")) ]]; then
    slot=option
  elif [[ ${_moxel_verbs[$path]-} ]]; then
    slot=verb
  else
    slot=$((++arguments))
  fi
}

# Sets `kind` to what an option or argument of the verb at `path` takes; a verb takes the tool's own options too.
_moxel_kind() { kind=${_moxel_takes["$path $1"]-${_moxel_takes["moxel $1"]-}}; }

# Goes past the word that was placed.
_moxel_pass() {
  local kind
  case $slot in
    option)
      _moxel_kind "$word"
      if [[ $kind ]]; then option=$word; fi
      if [[ $word == -- ]]; then only_arguments=yes; fi
      ;;
    verb) if [[ " ${_moxel_verbs[$path]} " == *" $word "* ]]; then path+=" $word"; fi ;;
    *)
      _moxel_kind "$slot"
      given[$slot]=$word
      given[${kind:--}]=$word
      ;;
  esac
}

# The names that the tool knows, but those that would mean something else between the quotes already typed.
_moxel_names() {
  local -a command=("$tool" names "${kind,,}")
  local name quote=${COMP_WORDS[COMP_CWORD]:0:1}
  [[ ${given[--registry]+given} ]] && command+=("--registry=${given[--registry]}")
  [[ ${given[DOMAIN]+given} ]] && command+=("--domain=${given[DOMAIN]}")
  [[ ${given[SCENARIO]+given} ]] && command+=("--scenario=${given[SCENARIO]}")
  while IFS= read -r name; do
    [[ $name == "$current"* ]] || continue
    case $quote in
      \'|\") [[ $name == *[\'\"\$\`\!]* ]] && continue ;;
      *) printf -v name %q "$name" ;;
    esac
    COMPREPLY+=("$name")
  done < <("${command[@]}" < /dev/null 2> /dev/null)
}

_moxel_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current"); }

_moxel() {
  local path=moxel option= only_arguments= arguments=0 word= slot= kind= tool= current= i
  local path_here= slot_here=
  local -A given=()
  COMPREPLY=()
  for ((i = 1; i < ${#COMP_WORDS[@]}; ++i)); do
    _moxel_read "${COMP_WORDS[i]}"
    if [[ $option && $word == '=' ]]; then # --option=value comes in three words
      [[ $i == "$COMP_CWORD" ]] || continue
      word=
    fi
    _moxel_place "$i"
    if [[ $i == "$COMP_CWORD" ]]; then
      path_here=$path slot_here=$slot current=$word
    else
      _moxel_pass
    fi
  done
  _moxel_read "$1"
  tool=$word path=$path_here
  _moxel_kind "$slot_here"
  case ${kind:-$slot_here} in
    verb) _moxel_words "${_moxel_verbs[$path]}" ;;
    option | [0-9]*) _moxel_words "${_moxel_options[$path]}" ;;
    -) ;;
    FILE) compopt -o default ;;
    DOMAIN | SCENARIO | USER | TASK | VARIABLE) _moxel_names ;;
    *) _moxel_words "$kind" ;;
  esac
}

complete -F _moxel moxel
