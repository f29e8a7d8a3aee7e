<?xml version='1.0' encoding='utf-8'?>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AboutDialog</name>
    <message>
        <source>version %1, protocol %2</source>
        <translation>Version %1, Protokoll %2</translation>
    </message>
</context>
<context>
    <name>AboutDialogUI</name>
    <message>
        <source>About Zorvic Control</source>
        <translation>Über Zorvic Control</translation>
    </message>
    <message>
        <source>&lt;h2&gt;Zorvic Control&lt;/h2&gt;&lt;p&gt;Version 3.0.0-pre&lt;/p&gt;&lt;p&gt;This is pre-release software. It comes without any guarantee of quality or fitness for purpose.&lt;/p&gt;</source>
        <translation>&lt;h2&gt;Zorvic Control&lt;/h2&gt;&lt;p&gt;Version 3.0.0-pre&lt;/p&gt;&lt;p&gt;Dies ist eine Vorabversion. Für ihre Qualität und ihre Eignung für einen bestimmten Zweck wird keine Gewähr übernommen.&lt;/p&gt;</translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>AsRunModel</name>
    <message>
        <source>Unit started</source>
        <translation>Zuspieler gestartet</translation>
    </message>
    <message>
        <source>Unit stopped</source>
        <translation>Zuspieler beendet</translation>
    </message>
    <message>
        <source>Gap</source>
        <translation>Lücke</translation>
    </message>
    <message>
        <source>Lost</source>
        <translation>Verloren</translation>
    </message>
    <message>
        <source>Clock set</source>
        <translation>Uhr gestellt</translation>
    </message>
    <message>
        <source>%1 (certified), %2</source>
        <translation>%1 (mit Zertifikat), %2</translation>
    </message>
    <message>
        <source>from %1: %2</source>
        <translation>ab %1: %2</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Was</translation>
    </message>
    <message>
        <source>Preset</source>
        <translation>Preset</translation>
    </message>
    <message>
        <source>Remaining</source>
        <translation>Rest</translation>
    </message>
    <message>
        <source>Asked by</source>
        <translation>Ausgelöst von</translation>
    </message>
    <message>
        <source>Shown</source>
        <translation>Gezeigt</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Einzelheiten</translation>
    </message>
</context>
<context>
    <name>AsRunWindow</name>
    <message>
        <source>As-run sheet - %1</source>
        <translation>Ablaufprotokoll - %1</translation>
    </message>
    <message>
        <source>%1 entries</source>
        <translation>%1 Einträge</translation>
    </message>
    <message>
        <source>%1 of %2 entries</source>
        <translation>%1 von %2 Einträgen</translation>
    </message>
    <message>
        <source>No answer from the unit, trying again</source>
        <translation>Zuspieler antwortet nicht, neuer Versuch läuft</translation>
    </message>
    <message>
        <source>Reading older entries</source>
        <translation>Ältere Einträge werden gelesen</translation>
    </message>
    <message>
        <source>Live</source>
        <translation>Live</translation>
    </message>
    <message>
        <source>%1 - %2</source>
        <translation>%1 - %2</translation>
    </message>
    <message>
        <source>Save as CSV</source>
        <translation>Als CSV speichern</translation>
    </message>
    <message>
        <source>CSV files (*.csv);;All files (*)</source>
        <translation>CSV-Dateien (*.csv);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>%1 entries saved as %2</source>
        <translation>%1 Einträge gespeichert als %2</translation>
    </message>
    <message>
        <source>Not saved as %1: %2</source>
        <translation>Nicht gespeichert als %1: %2</translation>
    </message>
</context>
<context>
    <name>AsRunWindowUI</name>
    <message>
        <source>As-run sheet</source>
        <translation>Ablaufprotokoll</translation>
    </message>
    <message>
        <source>Filter entries</source>
        <translation>Einträge filtern</translation>
    </message>
    <message>
        <source>Entries</source>
        <translation>Einträge</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Copy the selected entries</source>
        <translation>Die ausgewählten Einträge kopieren</translation>
    </message>
    <message>
        <source>Save as CSV...</source>
        <translation>Als CSV speichern …</translation>
    </message>
    <message>
        <source>Save the entries that are shown</source>
        <translation>Die angezeigten Einträge speichern</translation>
    </message>
</context>
<context>
    <name>AssetBrowser</name>
    <message>
        <source>%1 (missing)</source>
        <translation>%1 (fehlt)</translation>
    </message>
    <message>
        <source>Nothing chosen: the list does not show this folder.</source>
        <translation>Nichts übernommen: Die Liste zeigt einen anderen Ordner.</translation>
    </message>
    <message>
        <source>Import %1</source>
        <translation>%1 importieren</translation>
    </message>
    <message>
        <source>%1 of %2 files, %3 of %4</source>
        <translation>%1 von %2 Dateien, %3 von %4</translation>
    </message>
    <message>
        <source>%1, %2/s, %3 left</source>
        <translation>%1, %2/s, noch %3</translation>
    </message>
</context>
<context>
    <name>AssetBrowserUI</name>
    <message>
        <source>Select Assets</source>
        <translation>Medien auswählen</translation>
    </message>
    <message>
        <source>Drive</source>
        <translation>Laufwerk</translation>
    </message>
    <message>
        <source>Path on drive</source>
        <translation>Pfad auf dem Laufwerk</translation>
    </message>
    <message>
        <source>Go to the previous folder</source>
        <translation>Zum übergeordneten Ordner</translation>
    </message>
    <message>
        <source>Filter assets</source>
        <translation>Medien filtern</translation>
    </message>
    <message>
        <source>Files and folders</source>
        <translation>Dateien und Ordner</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Import</translation>
    </message>
    <message>
        <source>Ingesting - %p% complete</source>
        <translation>Import - %p% fertig</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Auswählen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>AssetsLoadingDialog</name>
    <message>
        <source>Asset %v of %m (%p%)</source>
        <translation>Datei %v von %m (%p%)</translation>
    </message>
</context>
<context>
    <name>AssetsLoadingDialogUI</name>
    <message>
        <source>Loading</source>
        <translation>Laden</translation>
    </message>
    <message>
        <source>Scanning asset metadata, please wait...</source>
        <translation>Mediendaten werden eingelesen, bitte warten …</translation>
    </message>
    <message>
        <source>Scanned assets</source>
        <translation>Eingelesene Dateien</translation>
    </message>
    <message>
        <source>Skip</source>
        <translation>Überspringen</translation>
    </message>
    <message>
        <source>Show the unit without waiting (Escape)</source>
        <translation>Den Zuspieler ohne Warten anzeigen (Esc)</translation>
    </message>
</context>
<context>
    <name>CompareWindow</name>
    <message>
        <source>Choose two units that are connected.</source>
        <translation>Zwei verbundene Zuspieler auswählen.</translation>
    </message>
    <message>
        <source>%1 does not answer.</source>
        <translation>%1 antwortet nicht.</translation>
    </message>
    <message>
        <source>No differences.</source>
        <translation>Keine Unterschiede.</translation>
    </message>
    <message numerus="yes">
        <source>%n difference(s).</source>
        <translation><numerusform>%n Unterschied.</numerusform><numerusform>%n Unterschiede.</numerusform></translation>
    </message>
    <message>
        <source>other content</source>
        <translation>anderer Inhalt</translation>
    </message>
    <message>
        <source>only in the first</source>
        <translation>nur im ersten</translation>
    </message>
    <message>
        <source>only in the second</source>
        <translation>nur im zweiten</translation>
    </message>
    <message>
        <source>Comparing…</source>
        <translation>Vergleich läuft …</translation>
    </message>
</context>
<context>
    <name>CompareWindowUI</name>
    <message>
        <source>Compare units</source>
        <translation>Zuspieler vergleichen</translation>
    </message>
    <message>
        <source>First unit</source>
        <translation>Erster Zuspieler</translation>
    </message>
    <message>
        <source>Second unit</source>
        <translation>Zweiter Zuspieler</translation>
    </message>
    <message>
        <source>Compare</source>
        <translation>Vergleichen</translation>
    </message>
    <message>
        <source>Differences</source>
        <translation>Unterschiede</translation>
    </message>
    <message>
        <source>Preset or media</source>
        <translation>Preset oder Datei</translation>
    </message>
    <message>
        <source>Difference</source>
        <translation>Unterschied</translation>
    </message>
    <message>
        <source>First</source>
        <translation>Erster</translation>
    </message>
    <message>
        <source>Second</source>
        <translation>Zweiter</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>take</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>resume</source>
        <translation>weiter</translation>
    </message>
    <message>
        <source>end</source>
        <translation>Ende</translation>
    </message>
    <message>
        <source>seek</source>
        <translation>Sprung</translation>
    </message>
    <message>
        <source>goto</source>
        <translation>Sprungmarke</translation>
    </message>
    <message>
        <source>link</source>
        <translation>Folge-Preset</translation>
    </message>
    <message>
        <source>loop</source>
        <translation>Wiederholung</translation>
    </message>
    <message>
        <source>hold</source>
        <translation>Standbild</translation>
    </message>
    <message>
        <source>edit</source>
        <translation>Änderung</translation>
    </message>
    <message>
        <source>delete</source>
        <translation>Löschung</translation>
    </message>
    <message>
        <source>import</source>
        <translation>Import</translation>
    </message>
    <message>
        <source>connect</source>
        <translation>Anmeldung</translation>
    </message>
    <message>
        <source>leave</source>
        <translation>Abmeldung</translation>
    </message>
    <message>
        <source>fault</source>
        <translation>Störung</translation>
    </message>
    <message>
        <source>power</source>
        <translation>Ein/Aus</translation>
    </message>
    <message>
        <source>not known</source>
        <translation>nicht bekannt</translation>
    </message>
    <message>
        <source>shown</source>
        <translation>gezeigt</translation>
    </message>
    <message>
        <source>not shown</source>
        <translation>nicht gezeigt</translation>
    </message>
    <message>
        <source>sound only</source>
        <translation>nur Ton</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Notizen</translation>
    </message>
    <message>
        <source>Colour</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>Place in the list</source>
        <translation>Platz in der Liste</translation>
    </message>
    <message>
        <source>Loop</source>
        <translation>Wiederholung</translation>
    </message>
    <message>
        <source>Link</source>
        <translation>Folge-Preset</translation>
    </message>
    <message>
        <source>Dissolve in</source>
        <translation>Überblendung Anfang</translation>
    </message>
    <message>
        <source>Dissolve out</source>
        <translation>Überblendung Ende</translation>
    </message>
    <message>
        <source>Fade in</source>
        <translation>Aufblende</translation>
    </message>
    <message>
        <source>Fade out</source>
        <translation>Abblende</translation>
    </message>
    <message>
        <source>In point</source>
        <translation>In-Punkt</translation>
    </message>
    <message>
        <source>Out point</source>
        <translation>Out-Punkt</translation>
    </message>
    <message>
        <source>Dissolve</source>
        <translation>Überblendung</translation>
    </message>
    <message>
        <source>Hold at the end</source>
        <translation>Standbild am Ende</translation>
    </message>
    <message>
        <source>without end</source>
        <translation>endlos</translation>
    </message>
    <message>
        <source>yes</source>
        <translation>ja</translation>
    </message>
    <message>
        <source>no</source>
        <translation>nein</translation>
    </message>
    <message>
        <source>Single</source>
        <translation>Einzeln</translation>
    </message>
    <message>
        <source>Primary</source>
        <translation>Haupt</translation>
    </message>
    <message>
        <source>Mirror</source>
        <translation>Spiegel</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>%1 (no answer)</source>
        <translation>%1 (antwortet nicht)</translation>
    </message>
    <message>
        <source>Library: version %1</source>
        <translation>Bibliothek: Version %1</translation>
    </message>
    <message>
        <source>Unit %1: %2</source>
        <translation>Zuspieler %1: %2</translation>
    </message>
    <message>
        <source>does not tell its version</source>
        <translation>nennt seine Version nicht</translation>
    </message>
</context>
<context>
    <name>MainWindowUI</name>
    <message>
        <source>Zorvic Control</source>
        <translation>Zorvic Control</translation>
    </message>
    <message>
        <source>Units</source>
        <translation>Zuspieler</translation>
    </message>
    <message>
        <source>Connect to a unit: File &gt; Connect to Zorvic</source>
        <translation>Mit einem Zuspieler verbinden: Datei &gt; Mit Zorvic verbinden</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Preset</source>
        <translation>Preset</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Connect to Zorvic</source>
        <translation>Mit Zorvic verbinden</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Create a Preset</source>
        <translation>Preset anlegen</translation>
    </message>
    <message>
        <source>Edit a Preset</source>
        <translation>Preset bearbeiten</translation>
    </message>
    <message>
        <source>Clone selected presets</source>
        <translation>Ausgewählte Presets duplizieren</translation>
    </message>
    <message>
        <source>Delete selected presets</source>
        <translation>Ausgewählte Presets löschen</translation>
    </message>
    <message>
        <source>Compare units</source>
        <translation>Zuspieler vergleichen</translation>
    </message>
    <message>
        <source>Soft Reboot Zorvic</source>
        <translation>Zorvic-Software neu starten</translation>
    </message>
    <message>
        <source>Reboot Zorvic</source>
        <translation>Zorvic neu starten</translation>
    </message>
    <message>
        <source>Shut down Zorvic</source>
        <translation>Zorvic herunterfahren</translation>
    </message>
    <message>
        <source>Keyboard shortcuts</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>About Zorvic Control</source>
        <translation>Über Zorvic Control</translation>
    </message>
</context>
<context>
    <name>OutputMonitor</name>
    <message>
        <source>Output %1</source>
        <translation>Ausgang %1</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>No signal</source>
        <translation>Kein Signal</translation>
    </message>
</context>
<context>
    <name>PlayHeadWidget</name>
    <message>
        <source>Abs %1</source>
        <translation>Abs. %1</translation>
    </message>
    <message>
        <source>Cued</source>
        <translation>Auf Position</translation>
    </message>
    <message>
        <source>Set trim start here</source>
        <translation>In-Punkt hier setzen</translation>
    </message>
    <message>
        <source>Set trim end here</source>
        <translation>Out-Punkt hier setzen</translation>
    </message>
    <message>
        <source>Reset trim</source>
        <translation>Trim zurücksetzen</translation>
    </message>
    <message>
        <source>Seek here</source>
        <translation>Hierher springen</translation>
    </message>
    <message>
        <source>Play position</source>
        <translation>Abspielposition</translation>
    </message>
    <message>
        <source>from %1 to %2</source>
        <translation>von %1 bis %2</translation>
    </message>
    <message>
        <source>cued at %1, %2</source>
        <translation>steht bei %1, %2</translation>
    </message>
    <message>
        <source>%1 left, %2</source>
        <translation>noch %1, %2</translation>
    </message>
</context>
<context>
    <name>PlayerPanelUI</name>
    <message>
        <source>Player</source>
        <translation>Player</translation>
    </message>
    <message>
        <source>No asset</source>
        <translation>Keine Datei</translation>
    </message>
    <message>
        <source>SDI Audio</source>
        <translation>SDI-Ton</translation>
    </message>
    <message>
        <source>Analog XLR</source>
        <translation>XLR analog</translation>
    </message>
    <message>
        <source>Channels 1-2</source>
        <translation>Kanäle 1-2</translation>
    </message>
    <message>
        <source>LTC Timecode Out</source>
        <translation>LTC-Timecode-Ausgang</translation>
    </message>
</context>
<context>
    <name>PlayerPanelWidget</name>
    <message>
        <source>TRT</source>
        <translation>Gesamt</translation>
    </message>
    <message>
        <source>Audio Channels</source>
        <translation>Tonkanäle</translation>
    </message>
    <message>
        <source>Audio Sample Rate</source>
        <translation>Abtastrate</translation>
    </message>
    <message>
        <source>Resolution</source>
        <translation>Auflösung</translation>
    </message>
    <message>
        <source>Codec</source>
        <translation>Codec</translation>
    </message>
</context>
<context>
    <name>PresetBuilder</name>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>Loop stays %1.</source>
        <translation>Wiederholung bleibt bei %1.</translation>
    </message>
    <message>
        <source>Fade stays %1 ms.</source>
        <translation>Blende bleibt bei %1 ms.</translation>
    </message>
    <message>
        <source>Saving moves this to %1</source>
        <translation>Wandert beim Speichern auf %1</translation>
    </message>
    <message>
        <source>its picture of %1x%2 cannot be placed</source>
        <translation>ihr Bild mit %1x%2 lässt sich nicht platzieren</translation>
    </message>
    <message>
        <source>%1 was not taken: %2.</source>
        <translation>%1 wurde nicht übernommen: %2.</translation>
    </message>
    <message>
        <source>the unit does not answer</source>
        <translation>der Zuspieler antwortet nicht</translation>
    </message>
    <message>
        <source>Not saved: the name is too long (%1 bytes, at most %2).</source>
        <translation>Nicht gespeichert: Der Name ist zu lang (%1 Byte, höchstens %2).</translation>
    </message>
    <message>
        <source>Not saved: the notes are too long (%1 bytes, at most %2).</source>
        <translation>Nicht gespeichert: Die Notizen sind zu lang (%1 Byte, höchstens %2).</translation>
    </message>
    <message>
        <source>Not saved: the unit refuses the preset; a limit of it is exceeded.</source>
        <translation>Nicht gespeichert: Der Zuspieler lehnt das Preset ab; eine seiner Grenzen ist überschritten.</translation>
    </message>
    <message>
        <source>Not saved: the unit could not store the preset.</source>
        <translation>Nicht gespeichert: Der Zuspieler konnte das Preset nicht sichern.</translation>
    </message>
    <message>
        <source>Not saved: the unit does not answer. Save again when it does.</source>
        <translation>Nicht gespeichert: Der Zuspieler antwortet nicht. Erneut speichern, sobald er wieder da ist.</translation>
    </message>
    <message>
        <source>The unit does not answer. When it does, save again if the preset is not in its list.</source>
        <translation>Der Zuspieler antwortet nicht. Sobald er wieder da ist, erneut speichern, falls das Preset nicht in der Liste steht.</translation>
    </message>
    <message>
        <source>the unit does not know it as a media file</source>
        <translation>der Zuspieler kennt sie nicht als Mediendatei</translation>
    </message>
    <message>
        <source>it is still being copied</source>
        <translation>sie wird noch kopiert</translation>
    </message>
    <message>
        <source>the unit is still reading it</source>
        <translation>der Zuspieler liest sie noch ein</translation>
    </message>
    <message>
        <source>the unit cannot read it</source>
        <translation>der Zuspieler kann sie nicht lesen</translation>
    </message>
    <message>
        <source>the unit does not tell what is in it</source>
        <translation>der Zuspieler gibt nicht an, was sie enthält</translation>
    </message>
</context>
<context>
    <name>PresetBuilderUI</name>
    <message>
        <source>Build a Preset</source>
        <translation>Preset zusammenstellen</translation>
    </message>
    <message>
        <source>Preset name</source>
        <translation>Preset-Name</translation>
    </message>
    <message>
        <source>Preset name (required)</source>
        <translation>Preset-Name (erforderlich)</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Notizen</translation>
    </message>
    <message>
        <source>Link to preset</source>
        <translation>Folge-Preset</translation>
    </message>
    <message>
        <source>Tab</source>
        <translation>Register</translation>
    </message>
    <message>
        <source>Loop Forever</source>
        <translation>Endlos wiederholen</translation>
    </message>
    <message>
        <source>Loops</source>
        <translation>Wiederholungen</translation>
    </message>
    <message>
        <source> Times</source>
        <translation>-mal</translation>
    </message>
    <message>
        <source>Loop </source>
        <translation>Wiederholen: </translation>
    </message>
    <message>
        <source>Fade to black</source>
        <translation>Ins Schwarz blenden</translation>
    </message>
    <message>
        <source>Fade time</source>
        <translation>Blendenzeit</translation>
    </message>
    <message>
        <source>s Fade</source>
        <translation> s Blende</translation>
    </message>
    <message>
        <source>Freeze at end</source>
        <translation>Am Ende Standbild</translation>
    </message>
    <message>
        <source>Save Preset</source>
        <translation>Preset speichern</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>QMenu</name>
    <message>
        <source>As-run sheet</source>
        <translation>Ablaufprotokoll</translation>
    </message>
</context>
<context>
    <name>ShortcutSheet</name>
    <message>
        <source>Everywhere</source>
        <translation>Überall</translation>
    </message>
    <message>
        <source>Show this sheet</source>
        <translation>Diese Übersicht zeigen</translation>
    </message>
    <message>
        <source>Show the letters of the menus; with a letter: open that menu</source>
        <translation>Buchstaben der Menüs zeigen; mit einem Buchstaben: dieses Menü öffnen</translation>
    </message>
    <message>
        <source>Next or previous control</source>
        <translation>Nächstes oder voriges Bedienelement</translation>
    </message>
    <message>
        <source>Next or previous part: presets, time, scrub bar, lists, picture, volume</source>
        <translation>Nächster oder voriger Bereich: Presets, Zeit, Zeitleiste, Listen, Bild, Lautstärke</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Leertaste (Space)</translation>
    </message>
    <message>
        <source>Press the button, change the tick</source>
        <translation>Taste drücken, Häkchen ändern</translation>
    </message>
    <message>
        <source>Menu, Shift+F10</source>
        <translation>Menütaste, Shift+F10</translation>
    </message>
    <message>
        <source>Open the menu of what has the keyboard</source>
        <translation>Kontextmenü öffnen</translation>
    </message>
    <message>
        <source>Next or previous unit</source>
        <translation>Nächster oder voriger Zuspieler</translation>
    </message>
    <message>
        <source>Close the unit's tab; the unit plays on</source>
        <translation>Register des Zuspielers schließen; er spielt weiter</translation>
    </message>
    <message>
        <source>Running a show</source>
        <translation>Vorstellung fahren</translation>
    </message>
    <message>
        <source>Return, Enter</source>
        <translation>Eingabetaste (Return, Enter)</translation>
    </message>
    <message>
        <source>Take the selected presets; pause or resume those that play</source>
        <translation>Die ausgewählten Presets starten; laufende anhalten oder weiterlaufen lassen</translation>
    </message>
    <message>
        <source>Escape</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>End the selected presets; in the time field: take back what was typed</source>
        <translation>Die ausgewählten Presets beenden; im Zeitfeld: Eingabe verwerfen</translation>
    </message>
    <message>
        <source>Return in the time field</source>
        <translation>Eingabetaste im Zeitfeld</translation>
    </message>
    <message>
        <source>Jump to the typed time before the out point</source>
        <translation>So lange vor den Out-Punkt springen, wie eingegeben</translation>
    </message>
    <message>
        <source>Left, Right on the scrub bar</source>
        <translation>Pfeil links, rechts auf der Zeitleiste</translation>
    </message>
    <message>
        <source>Step by 50 ms</source>
        <translation>Um 50 ms versetzen</translation>
    </message>
    <message>
        <source>Press "Goto 10"</source>
        <translation>„Auf 10 s“ drücken</translation>
    </message>
    <message>
        <source>Press "Goto 30"</source>
        <translation>„Auf 30 s“ drücken</translation>
    </message>
    <message>
        <source>Set the in point, set the out point</source>
        <translation>In-Punkt setzen, Out-Punkt setzen</translation>
    </message>
    <message>
        <source>Reset the trim</source>
        <translation>Trim zurücksetzen</translation>
    </message>
    <message>
        <source>Presets</source>
        <translation>Presets</translation>
    </message>
    <message>
        <source>Up, Down</source>
        <translation>Pfeil auf, ab</translation>
    </message>
    <message>
        <source>Select another preset; with Shift: several</source>
        <translation>Anderes Preset auswählen; mit Umschalttaste: mehrere</translation>
    </message>
    <message>
        <source>Letters</source>
        <translation>Buchstaben</translation>
    </message>
    <message>
        <source>Look a name up</source>
        <translation>Namen suchen</translation>
    </message>
    <message>
        <source>Alt+Up, Alt+Down</source>
        <translation>Alt+Pfeil auf, Alt+Pfeil ab</translation>
    </message>
    <message>
        <source>Move the selected presets in the list</source>
        <translation>Die ausgewählten Presets in der Liste verschieben</translation>
    </message>
    <message>
        <source>New preset, edit, clone</source>
        <translation>Neues Preset, bearbeiten, duplizieren</translation>
    </message>
    <message>
        <source>Show or hide the layout</source>
        <translation>Layout zeigen oder verbergen</translation>
    </message>
    <message>
        <source>Gotos and countdowns</source>
        <translation>Sprungmarken und Countdowns</translation>
    </message>
    <message>
        <source>Ctrl+Return</source>
        <translation>Strg+Eingabetaste</translation>
    </message>
    <message>
        <source>Jump to the goto of the current row</source>
        <translation>Zur Sprungmarke der aktuellen Zeile springen</translation>
    </message>
    <message>
        <source>Rename the current row</source>
        <translation>Aktuelle Zeile umbenennen</translation>
    </message>
    <message>
        <source>Preset builder and asset browser</source>
        <translation>Preset-Fenster und Medienauswahl</translation>
    </message>
    <message>
        <source>Return</source>
        <translation>Eingabetaste (Return)</translation>
    </message>
    <message>
        <source>Save the preset; take the selected files</source>
        <translation>Preset speichern; ausgewählte Dateien übernehmen</translation>
    </message>
    <message>
        <source>Space on a canvas</source>
        <translation>Leertaste auf einer Fläche</translation>
    </message>
    <message>
        <source>Choose its asset, or remove it</source>
        <translation>Ihre Datei auswählen oder entfernen</translation>
    </message>
    <message>
        <source>Right, Backspace</source>
        <translation>Pfeil rechts, Rücktaste</translation>
    </message>
    <message>
        <source>In the list of files: open the folder, go to the one above</source>
        <translation>In der Dateiliste: Ordner öffnen, zum übergeordneten Ordner</translation>
    </message>
    <message>
        <source>Copy the selected entries of the as-run sheet</source>
        <translation>Ausgewählte Einträge des Ablaufprotokolls kopieren</translation>
    </message>
    <message>
        <source>Filter the files, or the as-run sheet</source>
        <translation>Dateien oder das Ablaufprotokoll filtern</translation>
    </message>
    <message>
        <source>Close the window</source>
        <translation>Fenster schließen</translation>
    </message>
</context>
<context>
    <name>ShortcutSheetUI</name>
    <message>
        <source>Keyboard shortcuts</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>Keys</source>
        <translation>Tasten</translation>
    </message>
    <message>
        <source>What they do</source>
        <translation>Wirkung</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>Simulator</name>
    <message>
        <source>Player </source>
        <translation>Player </translation>
    </message>
</context>
<context>
    <name>Simulator::SimulatorPaneWidget</name>
    <message>
        <source>Output %1</source>
        <translation>Ausgang %1</translation>
    </message>
    <message>
        <source>Outputs %1-%2</source>
        <translation>Ausgänge %1-%2</translation>
    </message>
    <message>
        <source>Sound only</source>
        <translation>Nur Ton</translation>
    </message>
    <message>
        <source>No asset</source>
        <translation>Keine Datei</translation>
    </message>
    <message>
        <source>Scale mode cannot be changed while the preset is running.</source>
        <translation>Die Skalierung lässt sich nicht ändern, solange das Preset läuft.</translation>
    </message>
    <message>
        <source>Click to change scale mode</source>
        <translation>Klicken, um die Skalierung zu ändern</translation>
    </message>
</context>
<context>
    <name>SimulatorPaneWidgetUI</name>
    <message>
        <source>Outputs</source>
        <translation>Ausgänge</translation>
    </message>
    <message>
        <source>Resolution</source>
        <translation>Auflösung</translation>
    </message>
    <message>
        <source>No asset</source>
        <translation>Keine Datei</translation>
    </message>
    <message>
        <source>Snap to left</source>
        <translation>Links anlegen</translation>
    </message>
    <message>
        <source>Snap to top</source>
        <translation>Oben anlegen</translation>
    </message>
    <message>
        <source>Snap to bottom</source>
        <translation>Unten anlegen</translation>
    </message>
    <message>
        <source>Snap to right</source>
        <translation>Rechts anlegen</translation>
    </message>
    <message>
        <source>Reset to center</source>
        <translation>Wieder in die Mitte</translation>
    </message>
    <message>
        <source>Sizing mode</source>
        <translation>Skalierung</translation>
    </message>
    <message>
        <source>Set sizing mode</source>
        <translation>Skalierung wählen</translation>
    </message>
    <message>
        <source>Native</source>
        <translation>Original</translation>
    </message>
    <message>
        <source>Scale</source>
        <translation>Einpassen</translation>
    </message>
    <message>
        <source>Stretch</source>
        <translation>Strecken</translation>
    </message>
    <message>
        <source>Clear this canvas</source>
        <translation>Diese Fläche leeren</translation>
    </message>
</context>
<context>
    <name>Timecodes</name>
    <message>
        <source>Stopped</source>
        <translation>Gestoppt</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>Pausiert</translation>
    </message>
    <message>
        <source>Playing</source>
        <translation>Läuft</translation>
    </message>
    <message>
        <source>Cued</source>
        <translation>Auf Position</translation>
    </message>
</context>
<context>
    <name>ZorvicChooser</name>
    <message>
        <source>IP</source>
        <translation>IP</translation>
    </message>
    <message>
        <source>Nickname</source>
        <translation>Rufname</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>GUID</source>
        <translation>GUID</translation>
    </message>
    <message>
        <source>Role</source>
        <translation>Rolle</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message>
        <source>API</source>
        <translation>API</translation>
    </message>
    <message>
        <source>(none)</source>
        <translation>(keiner)</translation>
    </message>
    <message>
        <source>Type the address of a unit, or choose one from the list.</source>
        <translation>Adresse eines Zuspielers eingeben oder einen aus der Liste wählen.</translation>
    </message>
    <message>
        <source>No link to %1: %2.</source>
        <translation>Keine Verbindung zu %1: %2.</translation>
    </message>
    <message>
        <source>No unit answers at %1.</source>
        <translation>Unter %1 antwortet kein Zuspieler.</translation>
    </message>
    <message>
        <source>The unit at %1 does not say who it is.</source>
        <translation>Der Zuspieler unter %1 sagt nicht, wer er ist.</translation>
    </message>
</context>
<context>
    <name>ZorvicChooserUI</name>
    <message>
        <source>Choose a Zorvic</source>
        <translation>Zorvic auswählen</translation>
    </message>
    <message>
        <source>Units found</source>
        <translation>Gefundene Zuspieler</translation>
    </message>
    <message>
        <source>Zorvic IP Address</source>
        <translation>IP-Adresse des Zorvic</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <source>Has no effect yet</source>
        <translation>Noch ohne Wirkung</translation>
    </message>
    <message>
        <source>Delete assets</source>
        <translation>Medien löschen</translation>
    </message>
    <message>
        <source>Delete presets</source>
        <translation>Presets löschen</translation>
    </message>
</context>
<context>
    <name>ZorvicView</name>
    <message>
        <source>Ready</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <source>Ingesting</source>
        <translation>Import läuft</translation>
    </message>
    <message>
        <source>ERROR</source>
        <translation>FEHLER</translation>
    </message>
    <message>
        <source>Processing</source>
        <translation>Wird eingelesen</translation>
    </message>
    <message>
        <source>the unit does not answer</source>
        <translation>der Zuspieler antwortet nicht</translation>
    </message>
    <message>
        <source>the unit refuses it</source>
        <translation>der Zuspieler lehnt es ab</translation>
    </message>
    <message>
        <source>the unit could not do it</source>
        <translation>der Zuspieler konnte es nicht ausführen</translation>
    </message>
    <message>
        <source>Not done: %1 (%2)</source>
        <translation>Nicht ausgeführt: %1 (%2)</translation>
    </message>
    <message>
        <source>&lt;b&gt;&lt;font color="red"&gt;No assets&lt;/font&gt;&lt;/b&gt;</source>
        <translation>&lt;b&gt;&lt;font color="red"&gt;Keine Medien&lt;/font&gt;&lt;/b&gt;</translation>
    </message>
    <message>
        <source>&lt;b&gt;%1&lt;/b&gt; assets detected</source>
        <translation>&lt;b&gt;%1&lt;/b&gt; Medien gefunden</translation>
    </message>
    <message>
        <source>No answer for %1 s</source>
        <translation>Seit %1 s keine Antwort</translation>
    </message>
    <message>
        <source>Jump here</source>
        <translation>Hierher springen</translation>
    </message>
    <message>
        <source>Player %1</source>
        <translation>Player %1</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>Pausiert</translation>
    </message>
    <message>
        <source>Playing</source>
        <translation>Läuft</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Preset #</source>
        <translation>Preset-Nr.</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Notizen</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>TRT</source>
        <translation>Gesamt</translation>
    </message>
    <message>
        <source>Loop</source>
        <translation>Loop</translation>
    </message>
    <message>
        <source>Link</source>
        <translation>Folgt</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Length</source>
        <translation>Länge</translation>
    </message>
    <message>
        <source>File size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Dimensions</source>
        <translation>Bildformat</translation>
    </message>
    <message>
        <source>Codec</source>
        <translation>Codec</translation>
    </message>
    <message>
        <source>Audio
Bitrate</source>
        <translation>Ton-
Bitrate</translation>
    </message>
    <message>
        <source>Audio
Channels</source>
        <translation>Ton-
Kanäle</translation>
    </message>
    <message>
        <source>ID</source>
        <translation>Nr.</translation>
    </message>
    <message>
        <source>Position</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>Remaining</source>
        <translation>Rest</translation>
    </message>
    <message>
        <source>Video Mode: &lt;b&gt;&lt;font color="#00cd00"&gt; %1 @ %2fps&lt;/font&gt;&lt;/b&gt;</source>
        <translation>Videomodus: &lt;b&gt;&lt;font color="#00cd00"&gt; %1 @ %2 fps&lt;/font&gt;&lt;/b&gt;</translation>
    </message>
    <message>
        <source>&lt;b&gt;&lt;font color="#cd0000"&gt;Disconnected from server&lt;/font&gt;&lt;/b&gt;</source>
        <translation>&lt;b&gt;&lt;font color="#cd0000"&gt;Verbindung zum Zuspieler verloren&lt;/font&gt;&lt;/b&gt;</translation>
    </message>
    <message>
        <source>Error fetching unit status. Check connection.</source>
        <translation>Status des Zuspielers nicht lesbar. Verbindung prüfen.</translation>
    </message>
    <message>
        <source>Place the asset</source>
        <translation>Bild platzieren</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Set the volume</source>
        <translation>Lautstärke stellen</translation>
    </message>
    <message>
        <source>Adjust the picture</source>
        <translation>Bild einstellen</translation>
    </message>
    <message>
        <source>No preset selected</source>
        <translation>Kein Preset ausgewählt</translation>
    </message>
    <message>
        <source>&lt;b&gt;Preset:&lt;/b&gt; %1</source>
        <translation>&lt;b&gt;Preset:&lt;/b&gt; %1</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Auswählen</translation>
    </message>
    <message>
        <source>Not saved: the preset was deleted meanwhile. Save again to create it anew.</source>
        <translation>Nicht gespeichert: Das Preset wurde inzwischen gelöscht. Erneut speichern legt es neu an.</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Clone</source>
        <translation>Duplizieren</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Order the presets</source>
        <translation>Presets ordnen</translation>
    </message>
    <message>
        <source>Seek</source>
        <translation>Springen</translation>
    </message>
</context>
<context>
    <name>ZorvicViewUI</name>
    <message>
        <source>Time left</source>
        <translation>Restzeit</translation>
    </message>
    <message>
        <source>Time left to the out point. Type a time and press Return to seek.</source>
        <translation>Restzeit bis zum Out-Punkt. Zeit eingeben und mit der Eingabetaste dorthin springen.</translation>
    </message>
    <message>
        <source>00:00:00</source>
        <translation>00:00:00</translation>
    </message>
    <message>
        <source>Length</source>
        <translation>Länge</translation>
    </message>
    <message>
        <source>TRT</source>
        <translation>Gesamt</translation>
    </message>
    <message>
        <source>Take</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>Start the selected presets</source>
        <translation>Die ausgewählten Presets starten</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Pause or resume the selected presets</source>
        <translation>Die ausgewählten Presets anhalten oder weiterlaufen lassen</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Ende</translation>
    </message>
    <message>
        <source>End the selected presets (Escape)</source>
        <translation>Die ausgewählten Presets beenden (Esc)</translation>
    </message>
    <message>
        <source>Goto 30</source>
        <translation>Auf 30 s</translation>
    </message>
    <message>
        <source>Seek to the running time less the out point plus 30 seconds (to jump 30 seconds before the out point, type 30 into the time field and press Return)</source>
        <translation>Springt auf Gesamtlänge minus Out-Punkt plus 30 Sekunden (um 30 Sekunden vor den Out-Punkt zu springen, 30 ins Zeitfeld eingeben und die Eingabetaste drücken)</translation>
    </message>
    <message>
        <source>Goto 10</source>
        <translation>Auf 10 s</translation>
    </message>
    <message>
        <source>Jump to 10 seconds before the out point (Alt+1)</source>
        <translation>Springt auf 10 Sekunden vor dem Out-Punkt (Alt+1)</translation>
    </message>
    <message>
        <source>Set in</source>
        <translation>In setzen</translation>
    </message>
    <message>
        <source>Set the in point at the play head (Alt+I)</source>
        <translation>In-Punkt an die Abspielposition setzen (Alt+I)</translation>
    </message>
    <message>
        <source>Set out</source>
        <translation>Out setzen</translation>
    </message>
    <message>
        <source>Set the out point at the play head (Alt+O)</source>
        <translation>Out-Punkt an die Abspielposition setzen (Alt+O)</translation>
    </message>
    <message>
        <source>Reset trim</source>
        <translation>Trim zurücksetzen</translation>
    </message>
    <message>
        <source>Remove in and out point (Alt+R)</source>
        <translation>In- und Out-Punkt entfernen (Alt+R)</translation>
    </message>
    <message>
        <source>Assets and marks</source>
        <translation>Medien und Marken</translation>
    </message>
    <message>
        <source>Assets</source>
        <translation>Medien</translation>
    </message>
    <message>
        <source>Import assets</source>
        <translation>Medien importieren</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Importieren</translation>
    </message>
    <message>
        <source>Copy files from a drive into the unit</source>
        <translation>Dateien von einem Laufwerk in den Zuspieler kopieren</translation>
    </message>
    <message>
        <source>Delete assets</source>
        <translation>Medien löschen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Delete the selected assets from the unit</source>
        <translation>Die ausgewählten Medien vom Zuspieler löschen</translation>
    </message>
    <message>
        <source>Widen or restore the asset list</source>
        <translation>Medienliste verbreitern oder zurückstellen</translation>
    </message>
    <message>
        <source>Gotos</source>
        <translation>Sprungmarken</translation>
    </message>
    <message>
        <source>New goto</source>
        <translation>Neue Sprungmarke</translation>
    </message>
    <message>
        <source>New</source>
        <translation>Neu</translation>
    </message>
    <message>
        <source>Create a goto at the play position</source>
        <translation>Sprungmarke an der Abspielposition anlegen</translation>
    </message>
    <message>
        <source>Delete gotos</source>
        <translation>Sprungmarken löschen</translation>
    </message>
    <message>
        <source>Delete the selected gotos</source>
        <translation>Die ausgewählten Sprungmarken löschen</translation>
    </message>
    <message>
        <source>Countdowns</source>
        <translation>Countdowns</translation>
    </message>
    <message>
        <source>New countdown</source>
        <translation>Neuer Countdown</translation>
    </message>
    <message>
        <source>Create a countdown at the play position</source>
        <translation>Countdown an der Abspielposition anlegen</translation>
    </message>
    <message>
        <source>Delete countdowns</source>
        <translation>Countdowns löschen</translation>
    </message>
    <message>
        <source>Delete the selected countdowns</source>
        <translation>Die ausgewählten Countdowns löschen</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Eigenschaften</translation>
    </message>
    <message>
        <source>Video</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Player</source>
        <translation>Player</translation>
    </message>
    <message>
        <source>Whose picture the sliders adjust</source>
        <translation>Wessen Bild die Regler einstellen</translation>
    </message>
    <message>
        <source>Brightness</source>
        <translation>Helligkeit</translation>
    </message>
    <message>
        <source>Contrast</source>
        <translation>Kontrast</translation>
    </message>
    <message>
        <source>Saturation</source>
        <translation>Sättigung</translation>
    </message>
    <message>
        <source>Hue</source>
        <translation>Farbton</translation>
    </message>
    <message>
        <source>New preset</source>
        <translation>Neues Preset</translation>
    </message>
    <message>
        <source>Create a new preset</source>
        <translation>Neues Preset anlegen</translation>
    </message>
    <message>
        <source>Edit preset</source>
        <translation>Preset bearbeiten</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Edit this preset</source>
        <translation>Dieses Preset bearbeiten</translation>
    </message>
    <message>
        <source>Clone presets</source>
        <translation>Presets duplizieren</translation>
    </message>
    <message>
        <source>Clone</source>
        <translation>Duplizieren</translation>
    </message>
    <message>
        <source>Clone selected presets</source>
        <translation>Ausgewählte Presets duplizieren</translation>
    </message>
    <message>
        <source>Delete presets</source>
        <translation>Presets löschen</translation>
    </message>
    <message>
        <source>Delete selected presets</source>
        <translation>Ausgewählte Presets löschen</translation>
    </message>
    <message>
        <source>Show layout</source>
        <translation>Layout zeigen</translation>
    </message>
    <message>
        <source>Presets</source>
        <translation>Presets</translation>
    </message>
    <message>
        <source>L</source>
        <translation>L</translation>
    </message>
    <message>
        <source>R</source>
        <translation>R</translation>
    </message>
    <message>
        <source>Left volume</source>
        <translation>Lautstärke links</translation>
    </message>
    <message>
        <source>Left level</source>
        <translation>Pegel links</translation>
    </message>
    <message>
        <source>Right volume</source>
        <translation>Lautstärke rechts</translation>
    </message>
    <message>
        <source>Right level</source>
        <translation>Pegel rechts</translation>
    </message>
    <message>
        <source>Bind
channels</source>
        <translation>Kanäle
koppeln</translation>
    </message>
    <message>
        <source>Either slider sets both channels</source>
        <translation>Jeder Regler stellt beide Kanäle</translation>
    </message>
</context>
</TS>