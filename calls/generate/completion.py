"""The completion of a program's command line, for bash."""

FUNCTION = """# Completes the command line of {name}. Generated from its --help.
_{name}() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}} i
    # The shell takes the '=' of --option=value for a word.
    if [ "$word" = = ]; then word=; elif [ "$before" = = ]; then before=${{COMP_WORDS[COMP_CWORD - 2]}}; fi
    COMPREPLY=()
    case "$before" in
    {folders}) mapfile -t COMPREPLY < <(compgen -d -- "$word"); return ;;
    {files}) mapfile -t COMPREPLY < <(compgen -f -- "$word"); return ;;
    {values}) return ;;
    esac
    local words="{options}" files=()
{commands}    mapfile -t COMPREPLY < <(compgen "${{files[@]}}" -W "$words" -- "$word")
}}
complete -o filenames -F _{name} {name}
"""
COMMANDS = """    # The first word that is no option is the command.
    local command=
    for ((i = 1; i < COMP_CWORD; i++)); do
        case "${{COMP_WORDS[i - 1]}}" in {values}) continue ;; esac
        case "${{COMP_WORDS[i]}}" in -* | =) ;; *) command=${{COMP_WORDS[i]}}; break ;; esac
    done
    case "$command" in
    '') words="$words {commands}" ;;
{rows}    esac
"""
NOTHING = "' '"  # the pattern of a list without an element: no word has a blank


def pattern(options):
    return " | ".join(sorted(option.name for option in options)) or NOTHING


def takes_file(command):
    return "FILE" in command.usage


def row(command):
    words = " ".join(["$words", *(option.name for option in command.options)])
    return f"    {command.name}) words=\"{words}\"{' files=(-f)' if takes_file(command) else ''} ;;\n"


def script(program):
    options = program.options + [option for command in program.commands for option in command.options]
    valued = [option for option in options if option.argument]
    folders = [option for option in valued if option.argument == "DIR"]
    files = [option for option in valued if option.argument == "FILE"]
    others = {option.name: option for option in valued if option not in folders + files}
    commands = ""
    if program.commands:
        rows = [row(command) for command in program.commands if command.options or takes_file(command)]
        names = " ".join(command.name for command in program.commands if command.name[0].isalpha())
        commands = COMMANDS.format(values=pattern([*folders, *files, *others.values()]) + " | =", commands=names,
                                   rows="".join(rows))
    return FUNCTION.format(name=program.name, folders=pattern(folders), files=pattern(files),
                           values=pattern(others.values()), options=" ".join(option.name for option in program.options),
                           commands=commands)
