<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" sourcelanguage="en">
<context>
    <name>PlainTexts</name>
    <message>
        <source>Usage: Tonvale [OPTIONS]

Sets the volume of each program separately. A second start brings the window of the running one to
the front.

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
        <source>&amp;File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Close Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Quit %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Minimize</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Zoom</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;About %@</source>
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
        <source>&amp;Ignore</source>
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
</context>
</TS>
