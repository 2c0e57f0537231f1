<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" sourcelanguage="en">
<context>
    <name>PlainTexts</name>
    <message>
        <source>%1 needs a value; see --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 takes the next argument as its value; see --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no option %1; see --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: TonvalePlugin [--status | --version | --help]
Lets the Tonvale application set the volume of each program.
Runs until it is told to end; one is enough for a session.

  --status    print what the plug-in that runs in this session sees
  --version   print the version
  -h, --help  print this text
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is one option too many; see --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no session bus.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No plug-in runs in this session.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The plug-in does not answer: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The status can&apos;t be written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The volume can&apos;t be set: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program has no saved settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program no longer exists.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale does not answer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale refused: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no session bus: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The connection to the session bus was lost.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale is not running.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” takes other arguments; see --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The command has no option %1; see --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no command; see --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no command “%1”; see --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The output can&apos;t be written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” is not ignored.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>added</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>removed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>changed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no program “%1”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” may be any of: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>NAME</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>VOLUME</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>MUTED</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ACTIVITY</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>PID</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>muted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>playing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The volume of “%1” can&apos;t be set: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” is no volume: it is 0 to 100.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: tonvalectl COMMAND [OPTIONS]

Sets the volume of each program by way of the running Tonvale.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>
A NAME may be shortened as long as it fits one program only; upper and lower case are the same.
Exit codes: 0 done, 1 refused, 2 wrong arguments, 3 Tonvale is not running, 4 no such program,
5 doubtful name, 6 bad number, 7 the volume can&apos;t be set, 8 no session bus. See tonvalectl(1).
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>print and exit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>programs with volume, mute, level and process</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>one program&apos;s volume</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>set it: 40, 40%, or a step: +5%, -5%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>mute, unmute, or the one that it is not</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>neither show nor touch it from now on; it need not run</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>undo that</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>forget all that is remembered of it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the volume that programs begin with that were never seen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>bring the window to the front</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>print what changes, until Tonvale ends</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>also those that are remembered and not running</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>nothing but names</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the names of programs that are ignored</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>for list, get and monitor: print JSON</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” is no volume: it is 0 to 100, or a step such as +5%.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale is not running</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale can&apos;t be started</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale is not installed any more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Its icon goes too.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: TonvaleHelper [--version | --help]
Shows the icon of the Tonvale application in the tray.
Runs until it is told to end; one is enough for a session.

  --version   print the version
  -h, --help  print this text
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (muted)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (%2 %)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volume %1 %, muted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volume %1 %</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No sound output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mute the output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No program plays</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Tonvale</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit Tonvale</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mute everything that plays</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preferences…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: Tonvale [OPTIONS]

Sets the volume of each program separately. A second start brings the window of the running one to
the front.

  --action NAME      open the preferences (&quot;preferences&quot;), or mute what plays (&quot;mute-all&quot;)
  --debug            write everything to the log; same as holding Control and Meta at the start
  --screenshot FILE  save a picture of the window to FILE at the end
  -h, --help         print this text and exit
  --version          print the version and exit

Options of Qt, such as --platform and --style, work too. The log is Tonvale/Tonvale.log in
$XDG_STATE_HOME (~/.local/state). See also tonvale(1).
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Speech</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>set it to 100%</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Texts</name>
    <message>
        <source>Your settings were damaged</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale couldn&apos;t read them and is using the default settings.

The damaged file has been kept as
%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The settings file was damaged</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale has restored it. No settings were lost.

The damaged file has been kept as
%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings can&apos;t be saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Everything works as usual until you quit, and Tonvale keeps trying. What it hasn&apos;t saved by then will be forgotten.

%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no folder for it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file would be
%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The log can&apos;t be written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale works as usual; what it would write to its log goes to the system log.

%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>OK</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start Plug-in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Details…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volumes can&apos;t be set: the audio plug-in can&apos;t connect to Tonvale.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The audio plug-in isn&apos;t running. Your changes are saved and take effect when it starts.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The audio plug-in is being started…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The audio plug-in was started, but it isn&apos;t responding.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The audio plug-in is running, but can&apos;t reach the sound server or Tonvale. Your changes have no effect yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The audio plug-in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Socket: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program is missing or not executable.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Service: %@ (%@, %@)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The last start failed: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Its messages: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Program: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Its last messages, in %@:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Version %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The volume of each program, separately.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Minimize</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Menu</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sound Effects</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volume of &quot;%@&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mute &quot;%@&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unmute &quot;%@&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ignore &quot;%@&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is known about the program.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program runs in this application&apos;s sandbox.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This application starts the program.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The desktop started the program as this application.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program is a helper of this application.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The desktop runs the program as this application.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program is a game of this name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program is part of the desktop&apos;s speech service.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program identifies itself as this application.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program uses this application&apos;s icon.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program&apos;s file has this name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program uses this name for itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program reports this file name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program that asks for an administrator&apos;s password is missing. Please install the package &quot;pkexec&quot;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service that checks an administrator&apos;s password does not answer. Please make sure that the package &quot;polkitd&quot; is installed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No program in this session can ask for an administrator&apos;s password. Please install one, for example the package &quot;mate-polkit&quot;, and log in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>You are not authorized to change what all users of this computer share.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The tool that does this as an administrator cannot run.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 byte</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ bytes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ KB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ MB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ GB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ TB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ PB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ EB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program bypasses all volume controls.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Its sound is sent to the device in encoded form.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The program has locked its volume.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Programs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volume</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Process %d</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>playing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>muted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ cannot work with &quot;%@&quot; because it&apos;s a sandboxed application.

Sandboxed apps can be hidden via &quot;Hide sandboxed applications&quot; in the Preferences.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%@&quot; is ignored from now on.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing else makes sound yet.
A program appears here when it plays.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A program appears here when it plays.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The computer can&apos;t be restarted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The installer is missing.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please re-install the application.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Authorization error: %d</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The audio plug-in can&apos;t be installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tonvale can&apos;t be uninstalled</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installation failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Uninstall failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An unknown internal error has occurred.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An internal error (%d) has occurred.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn&apos;t install &quot;%@&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn&apos;t uninstall &quot;%@&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The new software requires that you restart your computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please restart to load the newly installed files.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restart</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Uninstall</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This software requires that you restart your computer to complete the uninstall process. 
 - Click on &apos;Uninstall&apos; to uninstall and restart manually.  
 - Click on &apos;Uninstall &amp; Restart&apos; to uninstall and restart now.  
 - Click &apos;Cancel&apos; to uninstall at a later time.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Uninstall &amp; Restart</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your settings stay in
%@
and the logs in
%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove the package &quot;%@&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It contains the application itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>U&amp;ninstall…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This application isn&apos;t installed, so it keeps no icon in the menu bar.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Log</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find Next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find Previous</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go to Time…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next Warning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous Warning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next Error</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous Error</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wrap Lines</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save a Copy…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter a time like 9:41 or 2014-03-07 09:41:05</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is so late</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>That is too much to copy. Save a copy of the log instead.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save a Copy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>That is the log itself. Choose another name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved as %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The copy can&apos;t be saved: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Log file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Only rows with this text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>More</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Levels</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All levels</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Without debug messages</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User actions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Warnings and errors</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Errors</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This run</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Run until %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>(%@ left out here; copying takes the whole message)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Critical</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Warning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Information</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User action</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Verbose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Debug</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ Log</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go to time:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Went on at the other end</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rows with it: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The log can&apos;t be read: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No row passes the filter.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This file does not begin like a log.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing has been logged yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file has been renamed or replaced. This is the one that was opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file has been deleted. This is what it holds.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file has been cut. What it held before is gone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lines left out because they are not UTF-8 text: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no log file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Collecting data…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Collecting data (%.0f%%)…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sending…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sending (%.0f%%)…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%u minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 minute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 hour, %u minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%u hours, %u minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 hour</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%u hours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%u days, %u:%02u</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 day, %u:%02u</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unknown</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ since last restart</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ %@, %u cores, %u threads</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ %@, %u cores</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ignore a Program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Name of the program:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>task manager of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>spelling checker of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>measures programs for developers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bluetooth dialogs of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>part of the dock of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>file dialogs of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>log viewer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>manages disks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>dock of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>buttons of a scanner</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>file manager of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>runs scripts when a folder changes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>tool for developers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>calendar of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>waits for chat messages</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>fetches pictures from cameras</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>waits for music players</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>login of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>indexes files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>looks for updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>reports errors</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>asks for passwords of servers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>another application of the same maker</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>accents for keys that are held</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>shows pictures and documents</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>waits for a remote control</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>shows web pages for Safari</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>runs scripts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>asks for passwords</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>shares documents with others</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>loads applications from a store</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>menu bar of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>restores windows</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>terminal of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>text editor of macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>this application</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>its icon in the menu bar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>starts programs on events</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ignored</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Icon</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Description</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>General</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Play a sample sound when a volume was set</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in &amp;menu bar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Color icon</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Grayscale icon</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The icon in the menu bar isn&apos;t part of this installation.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is being started…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is being ended…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ignore List</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Built-in:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Your own:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%@&quot; is ignored already.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start &amp;new programs at</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>For programs that were never seen before.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volume of new programs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What will be sent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Content of the selected entry</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>
… and %@ more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Full system profile</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pictures of this program&apos;s windows</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Support Information</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This helps to find out what is wrong. Names, addresses and the like have been replaced. Select an entry to read it, and uncheck what you want to leave out.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>If you want an answer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Comment:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;E-mail:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send to %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The system&apos;s log has nothing about this program.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn&apos;t save %@: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the disk may be full</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting for the server…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Thank you!</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An error occurred while sending.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save Support Information</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Preferences…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Support Information…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The log can&apos;t be read to its end.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Add</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Add…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The page can&apos;t be opened</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This desktop has no browser for it. The page is
%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ is not compatible with %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ cannot function properly if %@ is installed. Please uninstall %@ before using %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ is now on your computer, in %@, and in the menu of programs.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show &amp;What Is Sent…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Don&apos;t ask again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Crash Report</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>APP, or a part of it, has ended unexpectedly.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A report of it helps to find out why. It tells where in the program it happened, and about this computer. Names, addresses and the like have been replaced.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What did you do when it happened?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save Crash Report</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ will be copied to the %@ folder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ appears to be running from an install disk. It is highly recommended that you copy %@ to your computer and open it from there; if launched from an external disk, then that disk must always be available when using %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy to Computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy to Computer?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update in the %@ Folder and Relaunch</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy to the %@ Folder and Relaunch</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Continue</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A newer %@ is on this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is version %@, in %@. The install disk holds the older version %@. Click &apos;Cancel&apos; to start the newer one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use the Older Version</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy Error</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ could not be copied. Please use the Finder to copy %@ from the install disk to your computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ can&apos;t be started again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please start it from %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No such message comes after this one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No such message comes before this one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show Details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hide Details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>64-bit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last changed by you here, %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last changed by you with a key, %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last changed over the session bus, %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last changed by you in the tray, %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last changed elsewhere, %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reset to 100 %</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Type 0 to 100, a step such as +5, or “mute”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>mute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unmute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keys</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Up, Down</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous, next program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tab</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next control</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Left, Right</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volume by 1 percent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Page Up, Page Down</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volume by 10 percent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Home, End</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Silent, full volume</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Space</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mute or unmute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Del</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ignore the program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Letters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find a program by its name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shift+F10</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Menu of the program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>More con&amp;trast</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Keep a report when a part of the program ends unexpectedly</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Ask whether to send it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What Is Sent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select an entry to read it, and uncheck what you want to leave out.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Re&amp;commend…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close &amp;Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Ignored Programs…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Keys</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open the menu</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Redo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>More Con&amp;trast</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>F2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Type the volume</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+0</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
