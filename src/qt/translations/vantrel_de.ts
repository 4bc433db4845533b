<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Text</name>
    <message>
        <source>Instructions</source>
        <translation>Anweisungen</translation>
    </message>
    <message>
        <source>Measurement</source>
        <translation>Messung</translation>
    </message>
    <message>
        <source>Single exposures</source>
        <translation>Einzelaufnahmen</translation>
    </message>
    <message>
        <source>Declination errors of the plates</source>
        <translation>Deklinationsfehler der Aufnahmen</translation>
    </message>
    <message>
        <source>RA range</source>
        <translation>RA-Spanne</translation>
    </message>
    <message>
        <source>Dec error</source>
        <translation>Dek-Fehler</translation>
    </message>
    <message>
        <source>Image path</source>
        <translation>Bilderordner</translation>
    </message>
    <message>
        <source>Log path</source>
        <translation>Protokollordner</translation>
    </message>
    <message>
        <source>Folders</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Latitude</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>Longitude</source>
        <translation>Länge</translation>
    </message>
    <message>
        <source>Observing site</source>
        <translation>Beobachtungsort</translation>
    </message>
    <message>
        <source>Message display time</source>
        <translation>Anzeigedauer von Meldungen</translation>
    </message>
    <message>
        <source>Messages</source>
        <translation>Meldungen</translation>
    </message>
    <message>
        <source>Set-up</source>
        <translation>Einrichtung</translation>
    </message>
    <message>
        <source>Telescope</source>
        <translation>Teleskop</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>Pole and mount&apos;s axis</source>
        <translation>Pol und Achse der Montierung</translation>
    </message>
    <message>
        <source>Distance</source>
        <translation>Abstand</translation>
    </message>
    <message>
        <source>Angle</source>
        <translation>Winkel</translation>
    </message>
    <message>
        <source> CCW from up</source>
        <translation> gegen den Uhrzeigersinn von oben</translation>
    </message>
    <message>
        <source>East-West</source>
        <translation>Ost-West</translation>
    </message>
    <message>
        <source>Up-Down</source>
        <translation>Auf-Ab</translation>
    </message>
    <message>
        <source>Mount&apos;s axis</source>
        <translation>Achse der Montierung</translation>
    </message>
    <message>
        <source>Elevation and azimuth</source>
        <translation>Höhe und Azimut</translation>
    </message>
    <message>
        <source>Offsets of the mount&apos;s readings</source>
        <translation>Abweichung der Montierungsanzeige</translation>
    </message>
    <message>
        <source>Position</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>Horizontal</source>
        <translation>Waagrecht</translation>
    </message>
    <message>
        <source>Vertical</source>
        <translation>Senkrecht</translation>
    </message>
</context>
</TS>
