<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Text</name>
    <message>
        <source>Guide star to corner</source>
        <translation>Leitstern bis Ecke</translation>
    </message>
    <message>
        <source>The pictures you align for</source>
        <translation>Ihre Aufnahmen, für die Sie ausrichten</translation>
    </message>
    <message>
        <source>A turn of the bolt</source>
        <translation>Eine Umdrehung der Schraube</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Tolerance</source>
        <translation>Toleranz</translation>
    </message>
    <message>
        <source>Last message</source>
        <translation>Letzte Meldung</translation>
    </message>
    <message>
        <source>Declination errors</source>
        <translation>Deklinationsfehler</translation>
    </message>
    <message>
        <source>Uncertainty in arc-seconds</source>
        <translation>Unsicherheit in Bogensekunden</translation>
    </message>
    <message>
        <source>Distance from the pole over the nights</source>
        <translation>Abstand vom Pol über die Nächte</translation>
    </message>
    <message>
        <source>The measurement</source>
        <translation>Die Messung</translation>
    </message>
    <message>
        <source>Instructions</source>
        <translation>Anweisungen</translation>
    </message>
    <message>
        <source>Measurement</source>
        <translation>Messung</translation>
    </message>
    <message>
        <source>Plates × exposures</source>
        <translation>Aufnahmen × Anzahl</translation>
    </message>
    <message>
        <source>Exposures of each plate</source>
        <translation>Belichtungen je Aufnahme</translation>
    </message>
    <message>
        <source>Plate</source>
        <translation>Aufnahme</translation>
    </message>
    <message>
        <source>Hour angle</source>
        <translation>Stundenwinkel</translation>
    </message>
    <message>
        <source>Declination</source>
        <translation>Deklination</translation>
    </message>
    <message>
        <source>Take again</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Off along</source>
        <translation>daneben längs</translation>
    </message>
    <message>
        <source>Off across</source>
        <translation>daneben quer</translation>
    </message>
    <message>
        <source>Whether the plates agree</source>
        <translation>Ob die Aufnahmen zusammenpassen</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>Pressure</source>
        <translation>Luftdruck</translation>
    </message>
    <message>
        <source>Temperature</source>
        <translation>Temperatur</translation>
    </message>
    <message>
        <source>The sky by expected uncertainty</source>
        <translation>Der Himmel nach erwarteter Unsicherheit</translation>
    </message>
    <message>
        <source>What is to be expected</source>
        <translation>Was zu erwarten ist</translation>
    </message>
    <message>
        <source>Lowest altitude</source>
        <translation>Geringste Höhe</translation>
    </message>
    <message>
        <source>Horizon file</source>
        <translation>Horizontdatei</translation>
    </message>
    <message>
        <source>Free sky</source>
        <translation>Freier Himmel</translation>
    </message>
    <message>
        <source>Proposal</source>
        <translation>Vorschlag</translation>
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
        <source>Least squares</source>
        <translation>Kleinste Quadrate</translation>
    </message>
    <message>
        <source>Servers</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>Mount&apos;s port</source>
        <translation>Anschluss der Montierung</translation>
    </message>
    <message>
        <source>Gain</source>
        <translation>Verstärkung</translation>
    </message>
    <message>
        <source>Offset</source>
        <translation>Offset</translation>
    </message>
    <message>
        <source>Temperature of the camera, degrees Celsius</source>
        <translation>Temperatur der Kamera, Grad Celsius</translation>
    </message>
    <message>
        <source>Baud rate</source>
        <translation>Baudrate</translation>
    </message>
    <message>
        <source>Port of the search</source>
        <translation>Port der Suche</translation>
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
        <translation> linksherum von oben</translation>
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
    <message>
        <source>No measurement yet</source>
        <translation>Noch keine Messung</translation>
    </message>
    <message>
        <source>Moves the black point</source>
        <translation>Verschiebt den Schwarzpunkt</translation>
    </message>
    <message>
        <source>Moves the midtone</source>
        <translation>Verschiebt den Mittelton</translation>
    </message>
    <message>
        <source>Moves the white point</source>
        <translation>Verschiebt den Weißpunkt</translation>
    </message>
    <message>
        <source>Histogram and stretch</source>
        <translation>Histogramm und Streckung</translation>
    </message>
    <message>
        <source>Drag the black point, the midtone or the white point. By keyboard: up and down choose one, left and right move it. A double click makes the stretch automatic.</source>
        <translation>Schwarzpunkt, Mittelton oder Weißpunkt ziehen. Mit der Tastatur: Auf und Ab wählen einen aus, Links und Rechts verschieben ihn. Ein Doppelklick streckt wieder selbsttätig.</translation>
    </message>
    <message>
        <source>Camera image</source>
        <translation>Kamerabild</translation>
    </message>
    <message>
        <source>No image yet.

The pictures that the imaging program takes
appear here.</source>
        <translation>Noch kein Bild.

Die Bilder, die das Aufnahmeprogramm macht,
erscheinen hier.</translation>
    </message>
    <message>
        <source>mark</source>
        <translation>Marke</translation>
    </message>
    <message>
        <source>Way from the star to its mark</source>
        <translation>Weg vom Stern zu seiner Marke</translation>
    </message>
    <message>
        <source>HFD %1 px</source>
        <translation>HFD %1 px</translation>
    </message>
    <message>
        <source>Whole image</source>
        <translation>Ganzes Bild</translation>
    </message>
    <message>
        <source>Show the whole image</source>
        <translation>Das ganze Bild zeigen</translation>
    </message>
    <message>
        <source>Pixels 1:1</source>
        <translation>Pixel 1:1</translation>
    </message>
    <message>
        <source>Show every pixel of the image as one of the screen</source>
        <translation>Jedes Pixel des Bildes als eines des Bildschirms zeigen</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Automatic stretch</source>
        <translation>Selbsttätige Streckung</translation>
    </message>
    <message>
        <source>Choose the stretch from each image</source>
        <translation>Die Streckung nach jedem Bild wählen</translation>
    </message>
    <message>
        <source>Cross hair</source>
        <translation>Fadenkreuz</translation>
    </message>
    <message>
        <source>Lines through the middle of the image</source>
        <translation>Linien durch die Bildmitte</translation>
    </message>
    <message>
        <source>Invert</source>
        <translation>Umkehren</translation>
    </message>
    <message>
        <source>Dark stars on a bright sky</source>
        <translation>Dunkle Sterne auf hellem Himmel</translation>
    </message>
    <message>
        <source>Green by night</source>
        <translation>Nachts grün</translation>
    </message>
    <message>
        <source>Night vision in green instead of red</source>
        <translation>Nachtfarben in Grün statt in Rot</translation>
    </message>
    <message>
        <source>Histogram</source>
        <translation>Histogramm</translation>
    </message>
    <message>
        <source>Show the histogram and the stretch</source>
        <translation>Histogramm und Streckung zeigen</translation>
    </message>
    <message>
        <source>Full screen</source>
        <translation>Vollbild</translation>
    </message>
    <message>
        <source>The image all over the screen; Esc leaves it</source>
        <translation>Das Bild auf dem ganzen Bildschirm; Esc beendet es</translation>
    </message>
    <message>
        <source>Fit</source>
        <translation>Ganz</translation>
    </message>
    <message>
        <source>Auto</source>
        <translation>Auto</translation>
    </message>
    <message>
        <source>Column and row under the cursor, from 0</source>
        <translation>Spalte und Zeile unter dem Zeiger, ab 0</translation>
    </message>
    <message>
        <source>Value of the pixel under the cursor</source>
        <translation>Wert des Pixels unter dem Zeiger</translation>
    </message>
    <message>
        <source>Half-flux diameter of the star under the cursor</source>
        <translation>Halbflussdurchmesser des Sterns unter dem Zeiger</translation>
    </message>
    <message>
        <source>Columns and rows of the image</source>
        <translation>Spalten und Zeilen des Bildes</translation>
    </message>
    <message>
        <source>Pixels of the screen to pixels of the image</source>
        <translation>Pixel des Bildschirms zu Pixeln des Bildes</translation>
    </message>
    <message>
        <source>No image yet</source>
        <translation>Noch kein Bild</translation>
    </message>
    <message>
        <source>Instruments</source>
        <translation>Geräte</translation>
    </message>
    <message>
        <source>Camera Image</source>
        <translation>Kamerabild</translation>
    </message>
    <message>
        <source>Simulator</source>
        <translation>Simulator</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>, unit</source>
        <translation>, Einheit</translation>
    </message>
    <message>
        <source>, vertical</source>
        <translation>, senkrecht</translation>
    </message>
    <message>
        <source>Azimuth</source>
        <translation>Azimut</translation>
    </message>
    <message>
        <source>West</source>
        <translation>West</translation>
    </message>
    <message>
        <source>East</source>
        <translation>Ost</translation>
    </message>
    <message>
        <source>Elevation</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>Down</source>
        <translation>Ab</translation>
    </message>
    <message>
        <source>Up</source>
        <translation>Auf</translation>
    </message>
    <message>
        <source>Keys: ← → turn azimuth, ↑ ↓ elevation, by 1&apos;; with Shift 10&apos;, with Ctrl 0.1&apos;.</source>
        <translation>Tasten: ← → drehen das Azimut, ↑ ↓ die Höhe, um 1&apos;; mit Umschalt 10&apos;, mit Strg 0.1&apos;.</translation>
    </message>
    <message>
        <source>Polar axis and its adjusters</source>
        <translation>Polachse und ihre Verstellschrauben</translation>
    </message>
    <message>
        <source>RA</source>
        <translation>RA</translation>
    </message>
    <message>
        <source>Dec</source>
        <translation>Dek</translation>
    </message>
    <message>
        <source>Altitude</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>Keys: N, S, E, W</source>
        <translation>Tasten: N, S, E, W</translation>
    </message>
    <message>
        <source>Hand controller</source>
        <translation>Handsteuerung</translation>
    </message>
    <message>
        <source>Bright star</source>
        <translation>Heller Stern</translation>
    </message>
    <message>
        <source>Focal length</source>
        <translation>Brennweite</translation>
    </message>
    <message>
        <source>Pixel size</source>
        <translation>Pixelgröße</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>pixels</source>
        <translation>Pixel</translation>
    </message>
    <message>
        <source>Rotation</source>
        <translation>Drehung</translation>
    </message>
    <message>
        <source>Exposure</source>
        <translation>Belichtung</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Kamera</translation>
    </message>
    <message>
        <source>Seeing</source>
        <translation>Seeing</translation>
    </message>
    <message>
        <source>arc-seconds</source>
        <translation>Bogensekunden</translation>
    </message>
    <message>
        <source>Sky</source>
        <translation>Himmel</translation>
    </message>
    <message>
        <source>e- per s and pixel</source>
        <translation>e- je s und Pixel</translation>
    </message>
    <message>
        <source>Faintest star</source>
        <translation>Schwächster Stern</translation>
    </message>
    <message>
        <source>mag</source>
        <translation>mag</translation>
    </message>
    <message>
        <source>Hot pixels</source>
        <translation>Heiße Pixel</translation>
    </message>
    <message>
        <source>or share</source>
        <translation>oder Anteil</translation>
    </message>
    <message>
        <source>Pointing noise</source>
        <translation>Zielrauschen</translation>
    </message>
    <message>
        <source>Sky and mount</source>
        <translation>Himmel und Montierung</translation>
    </message>
    <message>
        <source>Air pressure</source>
        <translation>Luftdruck</translation>
    </message>
    <message>
        <source>Air temperature</source>
        <translation>Lufttemperatur</translation>
    </message>
    <message>
        <source>Roll noise</source>
        <translation>Rollstreuung</translation>
    </message>
    <message>
        <source>Flexure</source>
        <translation>Durchbiegung</translation>
    </message>
    <message>
        <source>Declination jump</source>
        <translation>Deklinationssprung</translation>
    </message>
    <message>
        <source>at slew</source>
        <translation>beim Schwenk</translation>
    </message>
    <message>
        <source>from now</source>
        <translation>von jetzt an</translation>
    </message>
    <message>
        <source>Tube and camera</source>
        <translation>Tubus und Kamera</translation>
    </message>
    <message>
        <source>Periodic error</source>
        <translation>Schneckenfehler</translation>
    </message>
    <message>
        <source>Worm period</source>
        <translation>Schneckenperiode</translation>
    </message>
    <message>
        <source>Clock error</source>
        <translation>Uhrfehler</translation>
    </message>
    <message>
        <source>s ahead</source>
        <translation>s voraus</translation>
    </message>
    <message>
        <source>Drive and clock</source>
        <translation>Antrieb und Uhr</translation>
    </message>
    <message>
        <source>What no mount says of itself: pictures show it, readings don&apos;t. 0 is off.</source>
        <translation>Was keine Montierung von sich sagt: Bilder zeigen es, Anzeigen nicht. 0 ist aus.</translation>
    </message>
    <message>
        <source>Faults</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>° north</source>
        <translation>° Nord</translation>
    </message>
    <message>
        <source>° east</source>
        <translation>° Ost</translation>
    </message>
    <message>
        <source>Site</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Mount</source>
        <translation>Montierung</translation>
    </message>
    <message>
        <source>Camera and sky</source>
        <translation>Kamera und Himmel</translation>
    </message>
    <message>
        <source>Measures a telescope mount&apos;s polar alignment and guides its correction.</source>
        <translation>Misst die Polausrichtung einer Teleskopmontierung und leitet ihre Korrektur an.</translation>
    </message>
    <message>
        <source>Keep settings, drives and documents in &lt;folder&gt;.</source>
        <translation>Einstellungen, Laufwerke und Dokumente in &lt;Ordner&gt; halten.</translation>
    </message>
    <message>
        <source>folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Measure once with the built-in simulator, without windows, and print the log.</source>
        <translation>Einmal mit dem eingebauten Simulator messen, ohne Fenster, und das Protokoll ausgeben.</translation>
    </message>
    <message>
        <source>Write the polar plot of --measure as a picture.</source>
        <translation>Das Poldiagramm von --measure als Bild schreiben.</translation>
    </message>
    <message>
        <source>file</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>Drop a picture here.</source>
        <translation>Ein Bild hierher ziehen.</translation>
    </message>
    <message>
        <source>The picture, matched stars circled</source>
        <translation>Das Bild, erkannte Sterne eingekreist</translation>
    </message>
    <message>
        <source>Choose a picture file</source>
        <translation>Eine Bilddatei wählen</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Scale, if known</source>
        <translation>Maßstab, falls bekannt</translation>
    </message>
    <message>
        <source>″/pixel</source>
        <translation>″/Pixel</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Right ascension</source>
        <translation>Rektaszension</translation>
    </message>
    <message>
        <source>Scale</source>
        <translation>Maßstab</translation>
    </message>
    <message>
        <source>Field</source>
        <translation>Feld</translation>
    </message>
    <message>
        <source>Roll</source>
        <translation>Drehung</translation>
    </message>
    <message>
        <source>Position angle</source>
        <translation>Positionswinkel</translation>
    </message>
    <message>
        <source>Stars matched</source>
        <translation>Erkannte Sterne</translation>
    </message>
    <message>
        <source>Middle of the picture</source>
        <translation>Bildmitte</translation>
    </message>
    <message>
        <source>Copy or save</source>
        <translation>Kopieren, sichern</translation>
    </message>
    <message>
        <source>Arrange Windows</source>
        <translation>Fenster anordnen</translation>
    </message>
    <message>
        <source>Opens the folder</source>
        <translation>Öffnet den Ordner</translation>
    </message>
</context>
<context>
    <name>Tip</name>
    <message>
        <source>Says what to turn, where the system has a voice</source>
        <translation>Sagt, was zu drehen ist, wo das System eine Stimme hat</translation>
    </message>
    <message>
        <source>These numbers on a page that a phone in the same network can read</source>
        <translation>Diese Zahlen auf einer Seite, die ein Telefon im selben Netz lesen kann</translation>
    </message>
    <message>
        <source>Tones that come faster the nearer the axis is to the pole</source>
        <translation>Töne, die schneller kommen, je näher die Achse am Pol ist</translation>
    </message>
    <message>
        <source>From the guide star to the picture&apos;s farthest corner</source>
        <translation>Vom Leitstern bis zur entferntesten Ecke der Aufnahme</translation>
    </message>
    <message>
        <source>Where your pictures are taken: near the pole the field turns more</source>
        <translation>Wo Ihre Aufnahmen liegen: nahe am Pol dreht sich das Feld mehr</translation>
    </message>
    <message>
        <source>A guider holds one star: the field turns about it</source>
        <translation>Eine Nachführkamera hält einen Stern: das Feld dreht sich um ihn</translation>
    </message>
    <message>
        <source>How long one of your pictures is exposed; empty: the tolerance stays 2&apos;</source>
        <translation>Belichtungszeit einer Ihrer Aufnahmen; leer: die Toleranz bleibt 2&apos;</translation>
    </message>
    <message>
        <source>The correction&apos;s mark is right for any star, not only near the equator</source>
        <translation>Die Marke der Korrektur stimmt für jeden Stern, nicht nur nahe am Äquator</translation>
    </message>
    <message>
        <source>Both adjusters at once, by pictures taken while you turn them</source>
        <translation>Beide Einstellschrauben zugleich, nach Aufnahmen, während Sie drehen</translation>
    </message>
    <message>
        <source>Arc-minutes that a whole turn of the azimuth bolt moves the axis; empty: not known</source>
        <translation>Bogenminuten, um die eine Umdrehung der Azimutschraube die Achse bewegt; leer: unbekannt</translation>
    </message>
    <message>
        <source>Arc-minutes that a whole turn of the elevation bolt moves the axis; empty: not known</source>
        <translation>Bogenminuten, um die eine Umdrehung der Höhenschraube die Achse bewegt; leer: unbekannt</translation>
    </message>
    <message>
        <source>The bolt goes the other way than the program says</source>
        <translation>Die Schraube geht andersherum, als das Programm sagt</translation>
    </message>
    <message>
        <source>A sound when the axis is within the tolerance, or leaves it</source>
        <translation>Ein Ton, wenn die Achse innerhalb der Toleranz liegt oder sie verlässt</translation>
    </message>
    <message>
        <source>Before you tighten the bolts: watches what that moves</source>
        <translation>Vor dem Festziehen der Schrauben: beobachtet, was sich dabei bewegt</translation>
    </message>
    <message>
        <source>Nothing was bumped: go on by the numbers</source>
        <translation>Nichts wurde angestoßen: weiter nach den Zahlen</translation>
    </message>
    <message>
        <source>Ends adjusting and measures afresh</source>
        <translation>Beendet das Einstellen und misst neu</translation>
    </message>
    <message>
        <source>Ends adjusting</source>
        <translation>Beendet das Einstellen</translation>
    </message>
    <message>
        <source>How far the mount turns between two plates, 1 to 45 degrees</source>
        <translation>Wie weit die Montierung zwischen zwei Aufnahmen dreht, 1 bis 45 Grad</translation>
    </message>
    <message>
        <source>The mount turns east between the plates</source>
        <translation>Die Montierung dreht zwischen den Aufnahmen nach Osten</translation>
    </message>
    <message>
        <source>The mount turns west between the plates</source>
        <translation>Die Montierung dreht zwischen den Aufnahmen nach Westen</translation>
    </message>
    <message>
        <source>How long each plate of a measurement is exposed</source>
        <translation>Belichtung jeder Aufnahme einer Messung</translation>
    </message>
    <message>
        <source>How long the mount settles before a plate is exposed</source>
        <translation>Wie lange die Montierung vor einer Aufnahme zur Ruhe kommt</translation>
    </message>
    <message>
        <source>Wait between the exposure and the next slew</source>
        <translation>Pause zwischen Belichtung und nächster Bewegung</translation>
    </message>
    <message>
        <source>Plates of a measurement, 3 to 9</source>
        <translation>Aufnahmen einer Messung, 3 bis 9</translation>
    </message>
    <message>
        <source>Exposures of each plate, 1 to 5</source>
        <translation>Belichtungen je Aufnahme, 1 bis 5</translation>
    </message>
    <message>
        <source>Measures the polar axis (F5)</source>
        <translation>Misst die Polachse (F5)</translation>
    </message>
    <message>
        <source>Stops what is going on (Esc)</source>
        <translation>Hält an, was gerade läuft (Esc)</translation>
    </message>
    <message>
        <source>Goes on to the next step (Enter)</source>
        <translation>Weiter zum nächsten Schritt (Enter)</translation>
    </message>
    <message>
        <source>Leaves this step out (F8)</source>
        <translation>Lässt diesen Schritt aus (F8)</translation>
    </message>
    <message>
        <source>How long a single exposure takes</source>
        <translation>Dauer einer einzelnen Belichtung</translation>
    </message>
    <message>
        <source>Wait between exposures that follow each other</source>
        <translation>Pause zwischen fortlaufenden Belichtungen</translation>
    </message>
    <message>
        <source>Exposes again and again until Stop</source>
        <translation>Belichtet immer wieder bis zum Stopp</translation>
    </message>
    <message>
        <source>Width of the lines that are drawn into the image, in pixels</source>
        <translation>Breite der Linien im Bild, in Pixeln</translation>
    </message>
    <message>
        <source>Takes one exposure, or a series</source>
        <translation>Macht eine Aufnahme oder eine Reihe</translation>
    </message>
    <message>
        <source>Takes one exposure and finds where it points</source>
        <translation>Macht eine Aufnahme und bestimmt, wohin sie zeigt</translation>
    </message>
    <message>
        <source>Shows the polar plot (Ctrl+P)</source>
        <translation>Zeigt das Poldiagramm (Strg+P)</translation>
    </message>
    <message>
        <source>Shows the telescope window (Ctrl+T)</source>
        <translation>Zeigt das Teleskopfenster (Strg+T)</translation>
    </message>
    <message>
        <source>Shows the log (Ctrl+L)</source>
        <translation>Zeigt das Protokoll (Strg+L)</translation>
    </message>
    <message>
        <source>How far the plates lie apart in right ascension</source>
        <translation>Wie weit die Aufnahmen in Rektaszension auseinander liegen</translation>
    </message>
    <message>
        <source>How far the declinations of the plates differ</source>
        <translation>Wie weit sich die Deklinationen der Aufnahmen unterscheiden</translation>
    </message>
    <message>
        <source>Folder for the camera&apos;s images</source>
        <translation>Ordner für die Bilder der Kamera</translation>
    </message>
    <message>
        <source>Choose the folder for images</source>
        <translation>Ordner für Bilder wählen</translation>
    </message>
    <message>
        <source>Folder for the message logs</source>
        <translation>Ordner für die Protokolle</translation>
    </message>
    <message>
        <source>Choose the folder for logs</source>
        <translation>Ordner für Protokolle wählen</translation>
    </message>
    <message>
        <source>Keeps every image under the name of its time</source>
        <translation>Behält jedes Bild unter dem Namen seiner Zeit</translation>
    </message>
    <message>
        <source>Takes the site from the telescope</source>
        <translation>Übernimmt den Ort vom Teleskop</translation>
    </message>
    <message>
        <source>Images come from CCDSoft</source>
        <translation>Bilder kommen von CCDSoft</translation>
    </message>
    <message>
        <source>Images come from MaxIm DL</source>
        <translation>Bilder kommen von MaxIm DL</translation>
    </message>
    <message>
        <source>Images come from a camera at an INDI or Alpaca server</source>
        <translation>Bilder kommen von einer Kamera an einem INDI- oder Alpaca-Server</translation>
    </message>
    <message>
        <source>Exposes the sub-frame that is set in CCDSoft</source>
        <translation>Belichtet den in CCDSoft gewählten Ausschnitt</translation>
    </message>
    <message>
        <source>Choose a camera</source>
        <translation>Kamera wählen</translation>
    </message>
    <message>
        <source>What real mounts and cameras need to be known</source>
        <translation>Was über echte Montierungen und Kameras bekannt sein muss</translation>
    </message>
    <message>
        <source>How long messages of the devices stay</source>
        <translation>Wie lange Meldungen der Geräte stehen bleiben</translation>
    </message>
    <message>
        <source>A sound tells that the star is within 0.5&apos; of its mark</source>
        <translation>Ein Ton meldet, dass der Stern näher als 0.5&apos; an der Marke ist</translation>
    </message>
    <message>
        <source>Images are solved by PinPoint</source>
        <translation>Bilder werden mit PinPoint gelöst</translation>
    </message>
    <message>
        <source>Images are solved by an image link</source>
        <translation>Bilder werden mit einem Image Link gelöst</translation>
    </message>
    <message>
        <source>Least size of a star&apos;s image</source>
        <translation>Mindestgröße eines Sternbilds</translation>
    </message>
    <message>
        <source>Least brightness of a star</source>
        <translation>Mindesthelligkeit eines Sterns</translation>
    </message>
    <message>
        <source>How far a star stands out from the sky&apos;s noise</source>
        <translation>Wie weit ein Stern aus dem Rauschen des Himmels ragt</translation>
    </message>
    <message>
        <source>Width of the filter before stars are looked for</source>
        <translation>Breite des Filters vor der Suche nach Sternen</translation>
    </message>
    <message>
        <source>So many stars must match</source>
        <translation>So viele Sterne müssen passen</translation>
    </message>
    <message>
        <source>Largest mean deviation of the matched stars</source>
        <translation>Größte mittlere Abweichung der zugeordneten Sterne</translation>
    </message>
    <message>
        <source>So many of the brightest stars are used</source>
        <translation>So viele der hellsten Sterne werden benutzt</translation>
    </message>
    <message>
        <source>The star catalogue</source>
        <translation>Der Sternkatalog</translation>
    </message>
    <message>
        <source>How much larger than the image the searched field is</source>
        <translation>Um wie viel das durchsuchte Feld größer ist als das Bild</translation>
    </message>
    <message>
        <source>The faintest stars of the catalogue that are used</source>
        <translation>Die schwächsten benutzten Sterne des Katalogs</translation>
    </message>
    <message>
        <source>Choose the folder of the catalogue</source>
        <translation>Ordner des Katalogs wählen</translation>
    </message>
    <message>
        <source>Solves a test image with this catalogue</source>
        <translation>Löst ein Testbild mit diesem Katalog</translation>
    </message>
    <message>
        <source>Looks around the expected place when the image isn&apos;t found there</source>
        <translation>Sucht um die erwartete Stelle herum, wenn das Bild dort nicht liegt</translation>
    </message>
    <message>
        <source>Reckons the image scale from focal length and pixels</source>
        <translation>Berechnet den Abbildungsmaßstab aus Brennweite und Pixeln</translation>
    </message>
    <message>
        <source>Solved by CCDSoft</source>
        <translation>Gelöst von CCDSoft</translation>
    </message>
    <message>
        <source>Solved by TheSky</source>
        <translation>Gelöst von TheSky</translation>
    </message>
    <message>
        <source>Arc-seconds per pixel</source>
        <translation>Bogensekunden je Pixel</translation>
    </message>
    <message>
        <source>Width of TheSky&apos;s chart</source>
        <translation>Breite der Karte von TheSky</translation>
    </message>
    <message>
        <source>The chosen telescope driver</source>
        <translation>Der gewählte Teleskoptreiber</translation>
    </message>
    <message>
        <source>Whether the telescope is connected</source>
        <translation>Ob das Teleskop verbunden ist</translation>
    </message>
    <message>
        <source>Choose a telescope</source>
        <translation>Teleskop wählen</translation>
    </message>
    <message>
        <source>The driver&apos;s own settings</source>
        <translation>Die eigenen Einstellungen des Treibers</translation>
    </message>
    <message>
        <source>Connects the telescope</source>
        <translation>Verbindet das Teleskop</translation>
    </message>
    <message>
        <source>Ends the connection</source>
        <translation>Beendet die Verbindung</translation>
    </message>
    <message>
        <source>Shows the last measurements of this site as well</source>
        <translation>Zeigt auch die letzten Messungen dieses Orts</translation>
    </message>
    <message>
        <source>The plates that this result came from</source>
        <translation>Die Aufnahmen, aus denen dieses Ergebnis stammt</translation>
    </message>
    <message>
        <source>Deep red on black for eyes adapted to the dark (Ctrl+N)</source>
        <translation>Tiefes Rot auf Schwarz für dunkel gewöhnte Augen (Strg+N)</translation>
    </message>
    <message>
        <source>The measurement that is told of below</source>
        <translation>Die Messung, die unten beschrieben ist</translation>
    </message>
    <message>
        <source>The plate that is taken again</source>
        <translation>Die Aufnahme, die wiederholt wird</translation>
    </message>
    <message>
        <source>The temperature that the camera is cooled to</source>
        <translation>Die Temperatur, auf die die Kamera gekühlt wird</translation>
    </message>
    <message>
        <source>A place where the measurement would be better</source>
        <translation>Ein Ort, an dem die Messung besser würde</translation>
    </message>
    <message>
        <source>Slews to the proposed place</source>
        <translation>Fährt zum vorgeschlagenen Ort</translation>
    </message>
    <message>
        <source>Focal length of the telescope</source>
        <translation>Brennweite des Teleskops</translation>
    </message>
    <message>
        <source>Inches or millimetres</source>
        <translation>Zoll oder Millimeter</translation>
    </message>
    <message>
        <source>Width of a pixel in micrometres, unbinned</source>
        <translation>Breite eines Pixels in Mikrometern, ohne Binning</translation>
    </message>
    <message>
        <source>Height of a pixel in micrometres, unbinned</source>
        <translation>Höhe eines Pixels in Mikrometern, ohne Binning</translation>
    </message>
    <message>
        <source>Pixels that are read out as one, across and down</source>
        <translation>Pixel, die als eines ausgelesen werden, waagrecht und senkrecht</translation>
    </message>
    <message>
        <source>Arc-seconds per pixel across, unbinned</source>
        <translation>Bogensekunden je Pixel waagrecht, ohne Binning</translation>
    </message>
    <message>
        <source>Arc-seconds per pixel down, unbinned</source>
        <translation>Bogensekunden je Pixel senkrecht, ohne Binning</translation>
    </message>
    <message>
        <source>Arc-seconds per pixel across, as the camera is read out</source>
        <translation>Bogensekunden je Pixel waagrecht, wie die Kamera ausgelesen wird</translation>
    </message>
    <message>
        <source>Arc-seconds per pixel down, as the camera is read out</source>
        <translation>Bogensekunden je Pixel senkrecht, wie die Kamera ausgelesen wird</translation>
    </message>
    <message>
        <source>Right ascension of the middle, J2000</source>
        <translation>Rektaszension der Mitte, J2000</translation>
    </message>
    <message>
        <source>Declination of the middle, J2000</source>
        <translation>Deklination der Mitte, J2000</translation>
    </message>
    <message>
        <source>Arc-seconds per pixel, across and down</source>
        <translation>Bogensekunden je Pixel, waagrecht und senkrecht</translation>
    </message>
    <message>
        <source>Width and height in degrees</source>
        <translation>Breite und Höhe in Grad</translation>
    </message>
    <message>
        <source>Stars that were matched, of those in the picture</source>
        <translation>Zugeordnete Sterne, von denen im Bild</translation>
    </message>
    <message>
        <source>Ends the search</source>
        <translation>Beendet die Suche</translation>
    </message>
    <message>
        <source>How far the axis stands east of the pole, in arc-minutes</source>
        <translation>Wie weit die Achse östlich des Pols steht, in Bogenminuten</translation>
    </message>
    <message>
        <source>How far the axis stands above the pole, in arc-minutes</source>
        <translation>Wie weit die Achse über dem Pol steht, in Bogenminuten</translation>
    </message>
    <message>
        <source>Shows where the axis really points</source>
        <translation>Zeigt, wohin die Achse wirklich weist</translation>
    </message>
    <message>
        <source>How far a press of the hand controller moves</source>
        <translation>Wie weit ein Druck auf die Handsteuerung bewegt</translation>
    </message>
    <message>
        <source>Follows the stars</source>
        <translation>Folgt den Sternen</translation>
    </message>
    <message>
        <source>A bright star to correct on</source>
        <translation>Ein heller Stern zum Justieren</translation>
    </message>
    <message>
        <source>Slews to the star</source>
        <translation>Fährt zum Stern</translation>
    </message>
    <message>
        <source>Puts the star into the middle of the picture</source>
        <translation>Stellt den Stern in die Bildmitte</translation>
    </message>
    <message>
        <source>Tells the mount that it looks at this star</source>
        <translation>Sagt der Montierung, dass sie auf diesen Stern zeigt</translation>
    </message>
    <message>
        <source>Latitude of the simulated site in degrees</source>
        <translation>Breite des simulierten Orts in Grad</translation>
    </message>
    <message>
        <source>Longitude of the simulated site in degrees, east positive</source>
        <translation>Länge des simulierten Orts in Grad, Ost positiv</translation>
    </message>
    <message>
        <source>Focal length in millimetres</source>
        <translation>Brennweite in Millimetern</translation>
    </message>
    <message>
        <source>Size of a pixel in micrometres</source>
        <translation>Größe eines Pixels in Mikrometern</translation>
    </message>
    <message>
        <source>Pixels across</source>
        <translation>Pixel waagrecht</translation>
    </message>
    <message>
        <source>Pixels down</source>
        <translation>Pixel senkrecht</translation>
    </message>
    <message>
        <source>How the camera is turned, in degrees</source>
        <translation>Wie die Kamera gedreht ist, in Grad</translation>
    </message>
    <message>
        <source>Exposure of the simulated images in seconds</source>
        <translation>Belichtung der simulierten Bilder in Sekunden</translation>
    </message>
    <message>
        <source>Width of the stars in arc-seconds</source>
        <translation>Breite der Sterne in Bogensekunden</translation>
    </message>
    <message>
        <source>Brightness of the sky</source>
        <translation>Helligkeit des Himmels</translation>
    </message>
    <message>
        <source>The faintest stars in the picture</source>
        <translation>Die schwächsten Sterne im Bild</translation>
    </message>
    <message>
        <source>How far slews miss, in arc-seconds</source>
        <translation>Wie weit Schwenks danebengehen, in Bogensekunden</translation>
    </message>
    <message>
        <source>Pressure of the air in hectopascals</source>
        <translation>Luftdruck in Hektopascal</translation>
    </message>
    <message>
        <source>Temperature of the air in degrees Celsius</source>
        <translation>Lufttemperatur in Grad Celsius</translation>
    </message>
    <message>
        <source>The picture is mirrored</source>
        <translation>Das Bild ist gespiegelt</translation>
    </message>
    <message>
        <source>The air lifts the stars</source>
        <translation>Die Luft hebt die Sterne</translation>
    </message>
    <message>
        <source>How far the camera&apos;s turn varies, in arc-seconds</source>
        <translation>Wie weit die Drehung der Kamera schwankt, in Bogensekunden</translation>
    </message>
    <message>
        <source>How far the tube sags, in arc-seconds</source>
        <translation>Wie weit sich der Tubus durchbiegt, in Bogensekunden</translation>
    </message>
    <message>
        <source>How far the declination jumps, in arc-seconds</source>
        <translation>Wie weit die Deklination springt, in Bogensekunden</translation>
    </message>
    <message>
        <source>Periodic error in arc-seconds</source>
        <translation>Periodischer Fehler in Bogensekunden</translation>
    </message>
    <message>
        <source>Period of the worm in seconds</source>
        <translation>Periode der Schnecke in Sekunden</translation>
    </message>
    <message>
        <source>How wrong the mount&apos;s clock is, in seconds</source>
        <translation>Wie falsch die Uhr der Montierung geht, in Sekunden</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>This computer has no system-information viewer.</source>
        <translation>Auf diesem Rechner gibt es kein Programm für Systeminformationen.</translation>
    </message>
    <message>
        <source>Telescope Chooser</source>
        <translation>Teleskop wählen</translation>
    </message>
    <message>
        <source>Choose a picture</source>
        <translation>Ein Bild wählen</translation>
    </message>
    <message>
        <source>Measures where the polar axis of a telescope mount points and guides its correction.
Written by the Vantrel developers.</source>
        <translation>Misst, wohin die Polachse einer Teleskopmontierung zeigt, und leitet ihre Korrektur an.
Geschrieben von den Vantrel-Entwicklern.</translation>
    </message>
    <message>
        <source>This program moves your telescope. It comes without any warranty: watch the mount while it slews, and keep its cables and the sky around the Sun clear.</source>
        <translation>Dieses Programm bewegt Ihr Teleskop. Es kommt ohne jede Gewährleistung: Beobachten Sie die Montierung, während sie schwenkt, achten Sie auf die Kabel und meiden Sie den Himmel um die Sonne.</translation>
    </message>
    <message>
        <source>System Info...</source>
        <translation>Systeminfo …</translation>
    </message>
    <message>
        <source>Tell the mount site and time</source>
        <translation>Der Montierung Ort und Zeit mitteilen</translation>
    </message>
    <message>
        <source>Stop ends slews</source>
        <translation>Stop beendet Schwenks</translation>
    </message>
    <message>
        <source>Name and port, such as localhost:7624; blanks between several</source>
        <translation>Name und Port, etwa localhost:7624; Leerzeichen zwischen mehreren</translation>
    </message>
    <message>
        <source>Name and port, such as 192.168.4.1:11111, of servers that no search finds</source>
        <translation>Name und Port, etwa 192.168.4.1:11111, von Servern, die keine Suche findet</translation>
    </message>
    <message>
        <source>Servers are searched for at this port of the network</source>
        <translation>An diesem Port des Netzes wird nach Servern gesucht</translation>
    </message>
    <message>
        <source>An INDI mount&apos;s serial port, such as /dev/ttyUSB0; empty leaves it to the driver</source>
        <translation>Serieller Anschluss einer INDI-Montierung, etwa /dev/ttyUSB0; leer überlässt ihn dem Treiber</translation>
    </message>
    <message>
        <source>9600, say; empty leaves it to the driver</source>
        <translation>Etwa 9600; leer überlässt sie dem Treiber</translation>
    </message>
    <message>
        <source>Set an INDI mount&apos;s site and time to this program&apos;s on connecting</source>
        <translation>Beim Verbinden Ort und Zeit einer INDI-Montierung nach diesem Programm stellen</translation>
    </message>
    <message>
        <source>Stop and closing the program stop a mount that is slewing</source>
        <translation>Stop und das Schließen des Programms halten eine schwenkende Montierung an</translation>
    </message>
    <message>
        <source>Cool the camera to</source>
        <translation>Kamera kühlen auf</translation>
    </message>
    <message>
        <source>Empty leaves the gain that the camera has</source>
        <translation>Leer lässt die Verstärkung, die die Kamera hat</translation>
    </message>
    <message>
        <source>Empty leaves the offset that the camera has</source>
        <translation>Leer lässt den Offset, den die Kamera hat</translation>
    </message>
    <message>
        <source>Without it a cooler that another program has switched on goes on</source>
        <translation>Ohne das läuft eine Kühlung weiter, die ein anderes Programm eingeschaltet hat</translation>
    </message>
    <message>
        <source>The camera is not connected</source>
        <translation>Die Kamera ist nicht verbunden</translation>
    </message>
    <message>
        <source>This camera has none</source>
        <translation>Hat diese Kamera nicht</translation>
    </message>
    <message>
        <source>This camera has no cooler</source>
        <translation>Diese Kamera hat keine Kühlung</translation>
    </message>
    <message>
        <source>%1, can&apos;t be set</source>
        <translation>%1, nicht einstellbar</translation>
    </message>
    <message>
        <source>%1, takes %2 to %3</source>
        <translation>%1, möglich %2 bis %3</translation>
    </message>
    <message>
        <source>cooler at %1 %</source>
        <translation>Kühlung bei %1 %</translation>
    </message>
    <message>
        <source>cooler on</source>
        <translation>Kühlung an</translation>
    </message>
    <message>
        <source>cooler off</source>
        <translation>Kühlung aus</translation>
    </message>
    <message>
        <source>Polar Axis Simulator</source>
        <translation>Polachsensimulator</translation>
    </message>
    <message>
        <source>Show the error</source>
        <translation>Fehler zeigen</translation>
    </message>
    <message>
        <source>Set It Askew</source>
        <translation>Verstellen</translation>
    </message>
    <message>
        <source>Somewhere within two degrees, without telling where</source>
        <translation>Irgendwohin innerhalb von zwei Grad, ohne zu sagen, wohin</translation>
    </message>
    <message>
        <source>Halt</source>
        <translation>Halt</translation>
    </message>
    <message>
        <source>Tracking</source>
        <translation>Nachführung</translation>
    </message>
    <message>
        <source>Go To</source>
        <translation>Anfahren</translation>
    </message>
    <message>
        <source>Center</source>
        <translation>Zentrieren</translation>
    </message>
    <message>
        <source>Sync</source>
        <translation>Abgleichen</translation>
    </message>
    <message>
        <source>Mirrored</source>
        <translation>Gespiegelt</translation>
    </message>
    <message>
        <source>Refraction</source>
        <translation>Refraktion</translation>
    </message>
    <message>
        <source>Counted from the last change of the jump; 1 is the next slew</source>
        <translation>Gezählt von der letzten Änderung des Sprungs an; 1 ist der nächste Schwenk</translation>
    </message>
    <message>
        <source>How many, or below 1 the share of all pixels</source>
        <translation>Wie viele, oder unter 1 der Anteil an allen Pixeln</translation>
    </message>
    <message>
        <source>Not connected</source>
        <translation>Nicht verbunden</translation>
    </message>
    <message>
        <source>Slewing</source>
        <translation>Schwenkt</translation>
    </message>
    <message>
        <source>Parked</source>
        <translation>Geparkt</translation>
    </message>
    <message>
        <source>Standing still</source>
        <translation>Steht</translation>
    </message>
    <message>
        <source>%1 a press</source>
        <translation>%1 je Druck</translation>
    </message>
    <message>
        <source>Correct on a star near the meridian and near the equator: that is what the mark is made for. The list begins with the best.</source>
        <translation>Korrigieren Sie an einem Stern nahe dem Meridian und dem Äquator: Dafür ist die Marke gemacht. Die Liste beginnt mit den besten.</translation>
    </message>
    <message>
        <source>%1 a pixel, %2 by %3</source>
        <translation>%1 je Pixel, %2 mal %3</translation>
    </message>
    <message>
        <source>%1 is no number</source>
        <translation>%1 ist keine Zahl</translation>
    </message>
    <message>
        <source>%1 is in the middle of the picture.</source>
        <translation>%1 steht in der Bildmitte.</translation>
    </message>
    <message>
        <source>%1 is %2 off the middle.</source>
        <translation>%1 steht %2 neben der Mitte.</translation>
    </message>
    <message>
        <source>Centering %1</source>
        <translation>%1 wird zentriert</translation>
    </message>
    <message>
        <source>Synced on %1</source>
        <translation>Auf %1 abgeglichen</translation>
    </message>
    <message>
        <source>Azimuth %1 too far east: turn west</source>
        <translation>Azimut %1 zu weit Ost: nach West drehen</translation>
    </message>
    <message>
        <source>Azimuth %1 too far west: turn east</source>
        <translation>Azimut %1 zu weit West: nach Ost drehen</translation>
    </message>
    <message>
        <source>Azimuth is right</source>
        <translation>Azimut stimmt</translation>
    </message>
    <message>
        <source>Elevation %1 too high: lower</source>
        <translation>Höhe %1 zu hoch: senken</translation>
    </message>
    <message>
        <source>Elevation %1 too low: raise</source>
        <translation>Höhe %1 zu tief: anheben</translation>
    </message>
    <message>
        <source>Elevation is right</source>
        <translation>Höhe stimmt</translation>
    </message>
    <message>
        <source>Total %1, measured at %2</source>
        <translation>Insgesamt %1, gemessen um %2</translation>
    </message>
    <message>
        <source>Good: within %1</source>
        <translation>Gut: innerhalb %1</translation>
    </message>
    <message>
        <source>Uncertain: about %1</source>
        <translation>Unsicher: etwa %1</translation>
    </message>
    <message>
        <source>Not yet within %1</source>
        <translation>Noch nicht innerhalb %1</translation>
    </message>
    <message>
        <source>No measurement yet</source>
        <translation>Noch keine Messung</translation>
    </message>
    <message>
        <source>No valid result</source>
        <translation>Kein gültiges Ergebnis</translation>
    </message>
    <message>
        <source>Arc-minutes from the pole that are good enough for you</source>
        <translation>So viele Bogenminuten vom Pol genügen</translation>
    </message>
    <message>
        <source>%1; about %2 left</source>
        <translation>%1; noch etwa %2</translation>
    </message>
    <message>
        <source>%1: exposing</source>
        <translation>%1: belichtet</translation>
    </message>
    <message>
        <source>%1: slewing</source>
        <translation>%1: schwenkt</translation>
    </message>
    <message>
        <source>%1: slewing back</source>
        <translation>%1: schwenkt zurück</translation>
    </message>
    <message>
        <source>%1: solving</source>
        <translation>%1: wird gelöst</translation>
    </message>
    <message>
        <source>Exposing</source>
        <translation>Belichtet</translation>
    </message>
    <message>
        <source>Slewing back</source>
        <translation>Schwenkt zurück</translation>
    </message>
    <message>
        <source>Solving</source>
        <translation>Wird gelöst</translation>
    </message>
    <message>
        <source>Plate %1 of %2</source>
        <translation>Platte %1 von %2</translation>
    </message>
    <message>
        <source>Plate %1 again</source>
        <translation>Platte %1 noch einmal</translation>
    </message>
    <message>
        <source>Stopping after the slew</source>
        <translation>Hält nach dem Schwenk an</translation>
    </message>
    <message>
        <source>Stopping after the exposure</source>
        <translation>Hält nach der Belichtung an</translation>
    </message>
    <message>
        <source>Stopping after the solution</source>
        <translation>Hält nach der Lösung an</translation>
    </message>
    <message>
        <source>Stopping</source>
        <translation>Hält an</translation>
    </message>
    <message>
        <source>Stopped</source>
        <translation>Angehalten</translation>
    </message>
    <message>
        <source>Measured: Next corrects, Skip ends</source>
        <translation>Gemessen: Next korrigiert, Skip beendet</translation>
    </message>
    <message>
        <source>Waiting for you to click Next</source>
        <translation>Wartet auf Next</translation>
    </message>
    <message>
        <source>Measurement complete</source>
        <translation>Messung vollständig</translation>
    </message>
    <message>
        <source>No position found: check the solve settings</source>
        <translation>Keine Position gefunden: Einstellungen des Lösens prüfen</translation>
    </message>
    <message>
        <source>Found at %1, %2: %3 from the mount&apos;s reading</source>
        <translation>Gefunden bei %1, %2: %3 von der Anzeige der Montierung</translation>
    </message>
    <message>
        <source>Found at %1, %2</source>
        <translation>Gefunden bei %1, %2</translation>
    </message>
    <message>
        <source>No mount</source>
        <translation>Keine Montierung</translation>
    </message>
    <message>
        <source>Mount ready</source>
        <translation>Montierung bereit</translation>
    </message>
    <message>
        <source>Mount off</source>
        <translation>Montierung aus</translation>
    </message>
    <message>
        <source>No camera</source>
        <translation>Keine Kamera</translation>
    </message>
    <message>
        <source>Camera ready</source>
        <translation>Kamera bereit</translation>
    </message>
    <message>
        <source>Camera off</source>
        <translation>Kamera aus</translation>
    </message>
    <message>
        <source>Camera failed</source>
        <translation>Kamerafehler</translation>
    </message>
    <message>
        <source>No solver</source>
        <translation>Kein Löser</translation>
    </message>
    <message>
        <source>Solver ready</source>
        <translation>Löser bereit</translation>
    </message>
    <message>
        <source>No site</source>
        <translation>Kein Ort</translation>
    </message>
    <message>
        <source>Site set</source>
        <translation>Ort bekannt</translation>
    </message>
    <message>
        <source>Opens the telescope window</source>
        <translation>Öffnet das Fenster der Montierung</translation>
    </message>
    <message>
        <source>Opens the choice of the imaging software</source>
        <translation>Öffnet die Wahl des Aufnahmeprogramms</translation>
    </message>
    <message>
        <source>Opens the plate solver&apos;s settings</source>
        <translation>Öffnet die Einstellungen des Lösens</translation>
    </message>
    <message>
        <source>Opens the observing site</source>
        <translation>Öffnet den Beobachtungsort</translation>
    </message>
    <message>
        <source>The last message: a click takes it away and opens the log</source>
        <translation>Die letzte Meldung: ein Klick nimmt sie fort und öffnet das Protokoll</translation>
    </message>
    <message>
        <source>No telescope is chosen. Choose one in the telescope window.</source>
        <translation>Kein Teleskop ist gewählt: im Fenster der Montierung eines wählen.</translation>
    </message>
    <message>
        <source>%1. The mount isn&apos;t connected: connect it in the telescope window.</source>
        <translation>%1. Die Montierung ist nicht verbunden: in ihrem Fenster verbinden.</translation>
    </message>
    <message>
        <source>%1. No imaging software is chosen: choose one on the Set-up page.</source>
        <translation>%1. Kein Aufnahmeprogramm ist gewählt: unter Einrichtung eines wählen.</translation>
    </message>
    <message>
        <source>The azimuth knob&apos;s %1 are %2 on the sky (× cosine of the latitude)</source>
        <translation>%1 am Azimutknopf sind am Himmel %2 (× Kosinus der Breite)</translation>
    </message>
    <message>
        <source>Solve a Picture</source>
        <translation>Ein Bild lösen</translation>
    </message>
    <message>
        <source>Solve</source>
        <translation>Lösen</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>A picture of any camera: FITS, also packed (.gz, .fz), JPEG, PNG, TIFF or a raw file</source>
        <translation>Ein Bild von irgendeiner Kamera: FITS, auch gepackt (.gz, .fz), JPEG, PNG, TIFF oder eine Rohdatei</translation>
    </message>
    <message>
        <source>Choose a picture file</source>
        <translation>Eine Bilddatei wählen</translation>
    </message>
    <message>
        <source>Arc-seconds per pixel; empty: as the file tells, or any</source>
        <translation>Bogensekunden je Pixel; leer: wie die Datei sagt, oder beliebig</translation>
    </message>
    <message>
        <source>Find out where the picture points</source>
        <translation>Herausfinden, wohin das Bild zeigt</translation>
    </message>
    <message>
        <source>As the log tells it: 180 with north up and east left</source>
        <translation>Wie im Protokoll: 180 mit Norden oben und Osten links</translation>
    </message>
    <message>
        <source>Where the upper edge points: from north through east</source>
        <translation>Wohin die Oberkante zeigt: von Norden über Osten</translation>
    </message>
    <message>
        <source>Reading the picture</source>
        <translation>Das Bild wird gelesen</translation>
    </message>
    <message>
        <source>Looking for it in the sky</source>
        <translation>Es wird am Himmel gesucht</translation>
    </message>
    <message>
        <source>Choose a picture first</source>
        <translation>Erst ein Bild wählen</translation>
    </message>
    <message>
        <source>The scale must be a number from 0.01 to 1000, or left empty</source>
        <translation>Der Maßstab muss eine Zahl von 0.01 bis 1000 sein oder leer bleiben</translation>
    </message>
    <message>
        <source>Search stopped</source>
        <translation>Suche abgebrochen</translation>
    </message>
    <message>
        <source>No stars were found in the picture</source>
        <translation>Im Bild sind keine Sterne zu finden</translation>
    </message>
    <message>
        <source>Not solved: %1 stars were found, but no place in the sky fits them</source>
        <translation>Nicht gelöst: %1 Sterne gefunden, aber keine Stelle am Himmel passt dazu</translation>
    </message>
    <message>
        <source>%1 is too large for the memory of this machine</source>
        <translation>%1 ist zu groß für den Speicher dieses Rechners</translation>
    </message>
    <message>
        <source>%1 has more than 250 million pixels</source>
        <translation>%1 hat mehr als 250 Millionen Pixel</translation>
    </message>
    <message>
        <source>The file tells no date: the stars are taken where they stand today</source>
        <translation>Die Datei nennt kein Datum: Die Sterne gelten, wie sie heute stehen</translation>
    </message>
    <message>
        <source>Solved in %1 s by %2 stars, off by %3&quot; on average</source>
        <translation>In %1 s mit %2 Sternen gelöst, im Mittel %3&quot; daneben</translation>
    </message>
    <message>
        <source>Welcome</source>
        <translation>Willkommen</translation>
    </message>
    <message>
        <source>How would you like to begin?</source>
        <translation>Womit möchten Sie beginnen?</translation>
    </message>
    <message>
        <source>Try it with the simulator</source>
        <translation>Mit dem Simulator probieren</translation>
    </message>
    <message>
        <source>A mount and a camera that are built in: measure and correct by daylight, with nothing connected.</source>
        <translation>Montierung und Kamera sind eingebaut: messen und korrigieren bei Tageslicht, ohne dass etwas angeschlossen ist.</translation>
    </message>
    <message>
        <source>My mount and camera</source>
        <translation>Meine Montierung und Kamera</translation>
    </message>
    <message>
        <source>Choose them from the INDI and Alpaca devices in your network, first the mount, then the camera.</source>
        <translation>Aus den INDI- und Alpaca-Geräten in Ihrem Netz wählen, erst die Montierung, dann die Kamera.</translation>
    </message>
    <message>
        <source>Just solve a picture</source>
        <translation>Nur ein Bild lösen</translation>
    </message>
    <message>
        <source>Where does it point? Drop a FITS file here, or choose it in the next window.</source>
        <translation>Wohin zeigt es? Eine FITS-Datei hierher ziehen oder im nächsten Fenster wählen.</translation>
    </message>
    <message>
        <source>No stars were found: clouds, a cover, or far out of focus?</source>
        <translation>Keine Sterne gefunden: Wolken, ein Deckel oder völlig unscharf?</translation>
    </message>
    <message>
        <source>The stars are trailed by %1 pixels at %2 degrees to the rows</source>
        <translation>Die Sterne sind %1 Pixel lang verzogen, %2 Grad gegen die Zeilen</translation>
    </message>
    <message>
        <source>The stars are %1 pixels wide: out of focus?</source>
        <translation>Die Sterne sind %1 Pixel breit: unscharf?</translation>
    </message>
    <message>
        <source>Only %1 of the %2 stars that a solution needs were found: clouds, or too short an exposure?</source>
        <translation>Nur %1 der %2 Sterne gefunden, die eine Lösung braucht: Wolken oder zu kurz belichtet?</translation>
    </message>
    <message>
        <source>The stars look sound, but no place that was looked at fits them in fields 0.3 to 30 degrees wide</source>
        <translation>Die Sterne sehen gut aus, aber in Feldern von 0.3 bis 30 Grad Breite passt keine der abgesuchten Stellen</translation>
    </message>
    <message>
        <source>The stars look sound, but no place in the whole sky fits them: is its scale of %1&quot; wrong by more than a seventh?</source>
        <translation>Die Sterne sehen gut aus, aber keine Stelle am ganzen Himmel passt dazu: Ist der Maßstab von %1&quot; um mehr als ein Siebtel falsch?</translation>
    </message>
    <message>
        <source>The stars look sound, but no place within %1 degrees of the start fits them: is the picture elsewhere, or its scale of %2&quot; wrong by more than a seventh?</source>
        <translation>Die Sterne sehen gut aus, aber im Umkreis von %1 Grad um den Anfang passt keine Stelle: Liegt das Bild woanders, oder ist sein Maßstab von %2&quot; um mehr als ein Siebtel falsch?</translation>
    </message>
    <message>
        <source>%1: %2 s unguided, a pixel (%3) of drift</source>
        <translation>%1: %2 s ohne Nachführkamera, ein Pixel (%3) Drift</translation>
    </message>
    <message>
        <source>%1: %2 s unguided, %3 of drift</source>
        <translation>%1: %2 s ohne Nachführkamera, %3 Drift</translation>
    </message>
    <message>
        <source>%1: %2 s guided, a pixel of trail %3° from the guide star</source>
        <translation>%1: %2 s mit Nachführkamera, ein Pixel Spur %3° vom Leitstern</translation>
    </message>
    <message>
        <source>Guided: the pixel scale calculator wants focal length and pixel size</source>
        <translation>Mit Nachführkamera: der Rechner des Bildmaßstabs braucht Brennweite und Pixelgröße</translation>
    </message>
    <message>
        <source>Guided: how far is the guide star from the farthest corner?</source>
        <translation>Mit Nachführkamera: wie weit ist der Leitstern von der entferntesten Ecke?</translation>
    </message>
    <message>
        <source>%1 as long as no exposure is given</source>
        <translation>%1, solange keine Belichtungszeit angegeben ist</translation>
    </message>
    <message>
        <source>Settling</source>
        <translation>Kommt zur Ruhe</translation>
    </message>
    <message>
        <source>%1: settling</source>
        <translation>%1: kommt zur Ruhe</translation>
    </message>
    <message>
        <source>%1, %2 of %3 s</source>
        <translation>%1, %2 von %3 s</translation>
    </message>
    <message>
        <source>%1; the picture is mirrored</source>
        <translation>%1; das Bild ist gespiegelt</translation>
    </message>
    <message>
        <source>%1 stars were found where about %2 are expected at this scale</source>
        <translation>%1 Sterne gefunden, wo bei diesem Maßstab etwa %2 zu erwarten sind</translation>
    </message>
    <message>
        <source>%1 stars were found where %2 or more are expected at this scale</source>
        <translation>%1 Sterne gefunden, wo bei diesem Maßstab %2 oder mehr zu erwarten sind</translation>
    </message>
    <message>
        <source>%1: clouds, too short an exposure, or a wrong scale?</source>
        <translation>%1: Wolken, zu kurz belichtet oder ein falscher Maßstab?</translation>
    </message>
    <message>
        <source>%1: hot pixels, or a wrong scale?</source>
        <translation>%1: heiße Pixel oder ein falscher Maßstab?</translation>
    </message>
    <message>
        <source>no cooler</source>
        <translation>keine Kühlung</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>%1. %2</source>
        <translation>%1. %2</translation>
    </message>
    <message>
        <source>%1, %2, on the meridian</source>
        <translation>%1, %2, im Meridian</translation>
    </message>
    <message>
        <source>%1, %2, %3 east</source>
        <translation>%1, %2, %3 östlich</translation>
    </message>
    <message>
        <source>%1, %2, %3 west</source>
        <translation>%1, %2, %3 westlich</translation>
    </message>
    <message>
        <source>%1 - best</source>
        <translation>%1 - am besten</translation>
    </message>
    <message>
        <source>%1 - good</source>
        <translation>%1 - gut</translation>
    </message>
    <message>
        <source>%1 - to sync on</source>
        <translation>%1 - zum Abgleichen</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no latitude</source>
        <translation>&quot;%1&quot; ist keine Breite</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no longitude</source>
        <translation>&quot;%1&quot; ist keine Länge</translation>
    </message>
    <message>
        <source>Write it like 48d 30m 15.0s, south with S or a minus sign</source>
        <translation>Zum Beispiel: 48d 30m 15.0s, Süden mit S oder Minuszeichen</translation>
    </message>
    <message>
        <source>Write it like 48d 30m 15.0s, west with W or a minus sign</source>
        <translation>Zum Beispiel: 48d 30m 15.0s, Westen mit W oder Minuszeichen</translation>
    </message>
</context>
</TS>
