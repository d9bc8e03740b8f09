<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>HeaderView</name>
    <message>
        <source>Brivanta</source>
        <translation>Brivanta</translation>
    </message>
    <message>
        <source>Block ads, trackers, popups, and cookie notices</source>
        <translation>Blockiert Werbung, Tracker, Pop-ups und Cookie-Hinweise</translation>
    </message>
</context>
<context>
    <name>InstructionsView</name>
    <message>
        <source>How to Enable Ad Blocking:</source>
        <translation>So aktivierst du den Werbeblocker:</translation>
    </message>
</context>
<context>
    <name>LinuxDNSSettingsManager</name>
    <message>
        <source>Switching on was cancelled.</source>
        <translation>Das Einschalten wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Could not run %1.</source>
        <translation>%1 konnte nicht gestartet werden.</translation>
    </message>
    <message>
        <source>Press “Add Network Settings” first.</source>
        <translation>Tippe zuerst auf „Add Network Settings“.</translation>
    </message>
    <message>
        <source>The DNS configuration is invalid: %1</source>
        <translation>Die DNS-Konfiguration ist ungültig: %1</translation>
    </message>
    <message>
        <source>“%1” is not an IP address.</source>
        <translation>„%1“ ist keine IP-Adresse.</translation>
    </message>
    <message>
        <source>it has no DNS settings.</source>
        <translation>Sie enthält keine DNS-Einstellungen.</translation>
    </message>
    <message>
        <source>DNS-over-HTTPS needs an https server URL with a host name.</source>
        <translation>DNS-over-HTTPS braucht eine https-Server-URL mit Hostnamen.</translation>
    </message>
    <message>
        <source>DNS-over-TLS needs a server name or at least one server address.</source>
        <translation>DNS-over-TLS braucht einen Servernamen oder mindestens eine Serveradresse.</translation>
    </message>
    <message>
        <source>an on-demand rule has the unknown interface type %1.</source>
        <translation>Eine Bei-Bedarf-Regel hat den unbekannten Schnittstellentyp %1.</translation>
    </message>
    <message>
        <source>an on-demand rule&apos;s probe URL must be an http or https URL.</source>
        <translation>Die Prüf-URL einer Bei-Bedarf-Regel muss eine http- oder https-URL sein.</translation>
    </message>
    <message>
        <source>Cancelled: nothing was changed.</source>
        <translation>Abgebrochen: Es wurde nichts geändert.</translation>
    </message>
    <message>
        <source>The helper failed (exit status %1).</source>
        <translation>Das Hilfsprogramm ist fehlgeschlagen (Exit-Status %1).</translation>
    </message>
</context>
<context>
    <name>OnboardingView</name>
    <message>
        <source>Feature pages</source>
        <translation>Funktionsseiten</translation>
    </message>
</context>
<context>
    <name>OrvindoPromoCard</name>
    <message>
        <source>Boost Your Privacy with Orvindo 🚀</source>
        <translation>Mehr Privatsphäre mit Orvindo 🚀</translation>
    </message>
    <message>
        <source>Block ads, cookies, popups, and tracking scripts directly in Safari. Enjoy a faster, cleaner, and private browsing experience with Orvindo.</source>
        <translation>Blockiere Werbung, Cookies, Pop-ups und Tracking-Skripte direkt in Safari. Genieße mit Orvindo schnelleres, aufgeräumtes und privates Surfen.</translation>
    </message>
</context>
<context>
    <name>PrivacyCard</name>
    <message>
        <source>Privacy Policy</source>
        <translation>Datenschutz</translation>
    </message>
    <message>
        <source>This app does not log IP addresses, and all queries are encrypted with DNS over HTTPS.</source>
        <translation>Diese App speichert keine IP-Adressen, und alle Anfragen werden mit DNS over HTTPS verschlüsselt.</translation>
    </message>
</context>
<context>
    <name>PromotionPager</name>
    <message>
        <source>Our other apps</source>
        <translation>Unsere anderen Apps</translation>
    </message>
</context>
<context>
    <name>RatingPromptView</name>
    <message>
        <source>Enjoying %1?</source>
        <translation>Gefällt dir %1?</translation>
    </message>
    <message>
        <source>Rate it on the App Store. It only takes a moment.</source>
        <translation>Bewerte die App im App Store. Es dauert nur einen Moment.</translation>
    </message>
    <message>
        <source>Write a Review</source>
        <translation>Bewertung schreiben</translation>
    </message>
    <message>
        <source>Not Now</source>
        <translation>Nicht jetzt</translation>
    </message>
</context>
<context>
    <name>ShareAndRateRow</name>
    <message>
        <source>Share App</source>
        <translation>Teilen</translation>
    </message>
    <message>
        <source>Rate App</source>
        <translation>Bewerten</translation>
    </message>
</context>
<context>
    <name>ShareSheetView</name>
    <message>
        <source>Share</source>
        <translation>Teilen</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Send by E-mail</source>
        <translation>Per E-Mail</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>StatusCard</name>
    <message>
        <source>Ad Blocking Status</source>
        <translation>Werbeblocker-Status</translation>
    </message>
    <message>
        <source>Enabled</source>
        <translation>Aktiviert</translation>
    </message>
    <message>
        <source>Disabled</source>
        <translation>Deaktiviert</translation>
    </message>
    <message>
        <source>Switch On</source>
        <translation>Einschalten</translation>
    </message>
    <message>
        <source>Switching On…</source>
        <translation>Wird eingeschaltet …</translation>
    </message>
</context>
<context>
    <name>StoreBadge</name>
    <message>
        <source>Download on the</source>
        <translation>Laden im</translation>
    </message>
    <message>
        <source>App Store</source>
        <translation>App Store</translation>
    </message>
</context>
<context>
    <name>SupportCard</name>
    <message>
        <source>Need Assistance? Contact Support</source>
        <translation>Brauchst du Hilfe? Kontaktiere den Support</translation>
    </message>
    <message>
        <source>We&apos;re happy to help! If you have any questions or encounter an issue, please email us before leaving a negative App Store review—we can usually resolve most problems within minutes. Your detailed feedback helps us improve, while vague reviews make it harder to address concerns. We appreciate your support!</source>
        <translation>Wir helfen gern! Wenn du Fragen hast oder auf ein Problem stößt, schreib uns bitte eine E-Mail, bevor du eine negative Bewertung im App Store hinterlässt – die meisten Probleme können wir innerhalb weniger Minuten lösen. Deine ausführliche Rückmeldung hilft uns, besser zu werden, während vage Bewertungen es schwer machen, auf Anliegen einzugehen. Danke für deine Unterstützung!</translation>
    </message>
    <message>
        <source>⚠️ Emails containing spam, incorrect or empty information, marketing content, promotions, or deals will be ignored. Abusive senders will be reported and blocked.</source>
        <translation>⚠️ E-Mails mit Spam, falschen oder leeren Angaben, Werbeinhalten, Aktionen oder Angeboten werden ignoriert. Missbräuchliche Absender werden gemeldet und blockiert.</translation>
    </message>
    <message>
        <source>Contact Support</source>
        <translation>Support kontaktieren</translation>
    </message>
    <message>
        <source>🔒 Your email address is never shared with anyone, and we do not collect any personal data.</source>
        <translation>🔒 Deine E-Mail-Adresse wird niemals weitergegeben, und wir erheben keine personenbezogenen Daten.</translation>
    </message>
</context>
<context>
    <name>SystemDnsStatus</name>
    <message>
        <source>Paused until %1.</source>
        <translation>Pausiert bis %1.</translation>
    </message>
    <message>
        <source>Not switched on.</source>
        <translation>Nicht eingeschaltet.</translation>
    </message>
    <message>
        <source>Switched on for another DNS address.</source>
        <translation>Für eine andere DNS-Adresse eingeschaltet.</translation>
    </message>
    <message>
        <source>Names can still reach %1 directly.</source>
        <translation>Namen können %1 weiterhin direkt erreichen.</translation>
    </message>
    <message>
        <source>The forwarder is not running.</source>
        <translation>Der Weiterleitungsdienst läuft nicht.</translation>
    </message>
    <message>
        <source>The filtering resolver cannot be reached: %1.</source>
        <translation>Der filternde DNS-Server ist nicht erreichbar: %1.</translation>
    </message>
    <message>
        <source>Lookups do not go through Brivanta.</source>
        <translation>Namensabfragen laufen nicht über Brivanta.</translation>
    </message>
    <message>
        <source>Cannot read systemd-resolved&apos;s settings.</source>
        <translation>Die Einstellungen von systemd-resolved sind nicht lesbar.</translation>
    </message>
    <message>
        <source>the network&apos;s own DNS server</source>
        <translation>den DNS-Server des Netzwerks</translation>
    </message>
</context>
<context>
    <name>TestSection</name>
    <message>
        <source>Protection from Intrusive Ads</source>
        <translation>Schutz vor aufdringlicher Werbung</translation>
    </message>
    <message>
        <source>Block annoying and intrusive ads for a cleaner, faster, and more enjoyable browsing experience.</source>
        <translation>Blockiere lästige und aufdringliche Werbung für ein aufgeräumteres, schnelleres und angenehmeres Surferlebnis.</translation>
    </message>
    <message>
        <source>Test Ad Blocking</source>
        <translation>Werbeblocker testen</translation>
    </message>
    <message>
        <source>Testing…</source>
        <translation>Test läuft…</translation>
    </message>
</context>
<context>
    <name>VelloquinPromoCard</name>
    <message>
        <source>Transcribe Easily with Velloquin ✍</source>
        <translation>Mühelos transkribieren mit Velloquin ✍</translation>
    </message>
    <message>
        <source>Convert speech into text effortlessly. Capture important conversations, meetings, and ideas with ease using Velloquin.</source>
        <translation>Verwandle Sprache mühelos in Text. Halte wichtige Gespräche, Besprechungen und Ideen ganz einfach mit Velloquin fest.</translation>
    </message>
</context>
<context>
    <name>brivanta::MainViewModel</name>
    <message>
        <source>✅ Blocked</source>
        <translation>✅ Blockiert</translation>
    </message>
    <message>
        <source>❌ Not Blocked</source>
        <translation>❌ Nicht blockiert</translation>
    </message>
    <message>
        <source>Blocking Score: %1%</source>
        <translation>Blockierquote: %1 %</translation>
    </message>
</context>
<context>
    <name>brivanta::OnboardingPages</name>
    <message>
        <source>Next</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Get Started</source>
        <translation>Los geht’s</translation>
    </message>
</context>
</TS>
