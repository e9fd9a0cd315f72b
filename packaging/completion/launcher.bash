# Completion of launcher(8) for bash 4.4 and newer: loaded by bash-completion,
# or sourced. Needs nothing of bash-completion and runs no program.
# shellcheck shell=bash

# _launcher_split TEXT: sets `words` to the words of a command line, without
# their quotes, the last one being what TEXT ends in, even if that is empty; and
# `raw` to that one as it stands there. Both belong to the caller.
_launcher_split() {
    local text=$1
    local quote='' word='' character
    local -i i begun=0
    words=() raw=''
    for ((i = 0; i < ${#text}; i++)); do
        character=${text:i:1}
        if [[ ! $quote && ($character == [[:blank:]] || $character == $'\n') ]]; then
            if ((begun)); then words+=("$word"); fi
            begun=0 word='' raw=''
            continue
        fi
        begun=1
        raw+=$character
        if [[ $character == "$quote" ]]; then
            quote=''
        elif [[ ! $quote && $character == [\'\"] ]]; then
            quote=$character
        elif [[ $character == \\ ]] &&
            [[ ! $quote || ($quote == \" && ${text:i+1:1} == [\$\`\"\\]) ]]; then
            i+=1
            raw+=${text:i:1}
            word+=${text:i:1}
        else
            word+=$character
        fi
    done
    words+=("$word")
}

# _launcher_files BEGIN [END]: the files with names that begin and end so, each
# with a NUL behind it, a directory with a slash, too. Whatever the shell does
# with masks.
_launcher_files() (
    set +o noglob
    shopt -u failglob dotglob nocaseglob
    shopt -s nullglob
    GLOBIGNORE=
    for file in "$1"*"${2-}"; do
        if [[ -d $file ]]; then file+=/; fi
        printf '%s\0' "$file"
    done
)

# _launcher_paths PREFIX PATH KIND: adds what PATH may become, a file or, with
# the KIND directory, a directory, behind PREFIX.
_launcher_paths() {
    local prefix=$1 path=$2 kind=$3
    local real=$path file
    # As the shell does: neither behind an option's "=" nor within quotes.
    if [[ ! $prefix && $raw == \~/* ]]; then real=$HOME${path:1}; fi
    while IFS= read -r -d '' file; do
        if [[ $kind == file || $file == */ ]]; then candidates+=("$prefix$path${file:${#real}}"); fi
    done < <(_launcher_files "$real")
    compopt -o filenames 2>/dev/null
    # Names of variables and users are for the shell.
    if ((${#candidates[@]} == 0)) && [[ $raw == *\$* || $raw == \~* ]]; then
        compopt -o bashdefault -o default 2>/dev/null
    fi
    # The shell sees no directory behind a prefix.
    if ((${#candidates[@]} == 1)) && [[ ${candidates[0]} == */ ]]; then compopt -o nospace 2>/dev/null; fi
}

# _launcher_texts PREFIX BEGIN TEXT...: adds each text that begins so.
_launcher_texts() {
    local prefix=$1 begin=$2
    local text
    for text in "${@:3}"; do
        if [[ $text == "$begin"* ]]; then candidates+=("$prefix$text"); fi
    done
}

# The ids of the launchers that run a service.
_launcher_pids() {
    local process name
    local -a arguments
    while IFS= read -r -d '' process; do
        { read -r name <"${process}comm" && [[ $name == launcher ]] &&
            mapfile -d '' -t arguments <"${process}cmdline"; } 2>/dev/null || continue
        if [[ ${arguments[1]-} != start ]]; then continue; fi
        process=${process%/}
        _launcher_texts "$1" "$2" "${process##*/}"
    done < <(_launcher_files "/proc/$2")
}

# The services that this machine's administrator has settings for.
_launcher_services() {
    local etc=${_launcher_etc-/etc} file
    while IFS= read -r -d '' file; do
        if [[ $file == */ ]]; then continue; fi
        file=${file##*/}
        _launcher_texts "$1" "$2" "${file%.conf}"
    done < <(
        _launcher_files "$etc/launcher/" .conf
        _launcher_files "$etc/default/Korvan/Orlanda/"
    )
}

# A JVM option that is not complete as it stands here gets no blank behind it.
_launcher_jvm_options() {
    local text
    local -a options=()
    for text in -Xmx -Xms -Xss -D -Dfile.encoding=UTF-8 -Djava.io.tmpdir= -Duser.language= \
        -Duser.timezone= -XX:MaxRAMPercentage= -XX:+HeapDumpOnOutOfMemoryError -XX:HeapDumpPath= \
        -XX:ErrorFile= -XX:+ExitOnOutOfMemoryError -XX:+UseG1GC -XX:+UseSerialGC -XX:+UseZGC \
        -XX:StartFlightRecording= -XX:NativeMemoryTracking=summary -Xlog:gc -Xlog:gc:file= \
        -Xcheck:jni -ea -javaagent: -agentlib:jdwp= \
        --add-modules= --add-opens= --add-exports= --enable-native-access=; do
        case $text in
            -X[ms][msx] | -D | *[=:]) options+=("$text") ;;
            *) options+=("$text ") ;;
        esac
    done
    _launcher_texts "$1" "$2" "${options[@]}"
    compopt -o nospace 2>/dev/null
}

# _launcher_value OPTION PREFIX BEGIN: adds the values of an option. PREFIX is
# what stands before the value in the same word.
_launcher_value() {
    case $1 in
        --instance | --workdir | --javahome) _launcher_paths "$2" "$3" directory ;;
        --pidfile | --cout | --cerr | --cstd | --clog | --jvmdll) _launcher_paths "$2" "$3" file ;;
        --jclasspath | --jmodulepath)
            local last=${3##*:}
            _launcher_paths "$2${3%"$last"}" "$last" file
            ;;
        --pid) _launcher_pids "$2" "$3" ;;
        --servicename) _launcher_services "$2" "$3" ;;
        --jvmopt) _launcher_jvm_options "$2" "$3" ;;
    esac
}

# _launcher_options MODE: sets `switches`, `valued` and `repeatable`.
_launcher_options() {
    switches=(--help --version)
    valued=() repeatable=' '
    case $1 in
        start)
            switches+=(--daemon --quiet)
            valued=(--cerr --clog --cout --cstd --instance --javahome --jclasspath --jifacearg
                --jifaceclass --jmodulepath --jvmdll --jvmopt --pidfile --procname --servicename
                --workdir)
            repeatable=' --jifacearg --jvmopt '
            ;;
        stop)
            switches+=(--fast)
            valued=(--cerr --clog --cout --cstd --pid --pidfile --timeout)
            ;;
    esac
}

# Adds the options that may still follow those that are `given`.
_launcher_remaining_options() {
    local option hidden=' '
    for option in "${given[@]}"; do
        hidden+="$option "
        case $option in
            --javahome) hidden+='--jvmdll ' ;;
            --jvmdll) hidden+='--javahome ' ;;
            --pid) hidden+='--pidfile ' ;;
            --pidfile) hidden+='--pid ' ;;
            --cstd) hidden+='--cout --cerr ' ;;
            --cout | --cerr) hidden+='--cstd ' ;;
        esac
    done
    for option in "${switches[@]}" "${valued[@]}"; do
        if [[ $hidden != *" $option "* || $repeatable == *" $option "* ]]; then
            _launcher_texts '' "$current" "$option"
        fi
    done
}

# Reads the words of a mode into `given`; sets `pending` to the option whose
# value the word behind them is.
_launcher_read_given() {
    local word
    pending=''
    for word in "$@"; do
        if [[ $pending ]]; then
            pending=''
        elif [[ " ${valued[*]} " == *" $word "* ]]; then
            pending=$word
            given+=("$word")
        elif [[ $word == -* ]]; then
            given+=("${word%%=*}")
        fi
    done
}

# In start and stop.
_launcher_mode() {
    local -a switches valued given=()
    local repeatable pending
    _launcher_options "$mode"
    _launcher_read_given "${behind[@]}"
    _launcher_read_given "${before[@]}"
    if [[ $pending ]]; then
        _launcher_value "$pending" '' "$current"
    elif [[ $current == --*=* && " ${valued[*]} " == *" ${current%%=*} "* ]]; then
        _launcher_value "${current%%=*}" "${current%%=*}=" "${current#*=}"
    else
        _launcher_remaining_options
    fi
}

_launcher() {
    local -a words before behind candidates=()
    local IFS=$' \t\n' raw current mode typed=${2-} candidate head
    # Not COMP_WORDS: how that is split depends on COMP_WORDBREAKS and quotes.
    _launcher_split "${COMP_LINE:COMP_POINT}"
    behind=("${words[@]:1}")
    _launcher_split "${COMP_LINE:0:COMP_POINT}"
    local last=$((${#words[@]} - 1))
    current=${words[last]}
    mode=${words[1]-}
    before=("${words[@]:2:last-2}")

    COMPREPLY=()
    if ((last == 0)); then return; fi
    if ((last == 1)); then
        _launcher_texts '' "$current" start stop help
        if [[ $current == -* ]]; then _launcher_texts '' "$current" --help --version; fi
    elif [[ $mode == start || $mode == stop ]]; then
        _launcher_mode
    elif [[ $mode == help ]] && ((last == 2)); then
        _launcher_texts '' "$current" start stop --help --version
    fi

    # The shell replaces what it takes for the word: the part behind a ":" or
    # "=" or a quote, maybe.
    if [[ $typed == [:=] ]]; then typed=''; fi
    head=''
    if [[ $raw == *"$typed" ]]; then
        _launcher_split "${raw%"$typed"}"
        head=${words[0]}
    fi
    for candidate in "${candidates[@]}"; do COMPREPLY+=("${candidate#"$head"}"); done
}

complete -F _launcher launcher
