import QtQuick

// A small line icon drawn here, so the window looks the same under every icon theme.
Canvas {
    id: glyph
    property string symbol
    property color colour: SettingsStyle.secondaryText
    width: 14
    height: 14
    onSymbolChanged: requestPaint()
    onColourChanged: requestPaint()
    onPaint: {
        const g = getContext("2d")
        g.reset()
        g.strokeStyle = colour
        g.fillStyle = colour
        g.lineWidth = 1.6
        g.lineCap = "round"
        g.beginPath()
        if (symbol === "search") {
            g.arc(6, 6, 4.2, 0, Math.PI * 2)
            g.moveTo(9.2, 9.2); g.lineTo(13, 13)
        } else if (symbol === "chevron.right") {
            g.moveTo(5, 2.5); g.lineTo(9.5, 7); g.lineTo(5, 11.5)
        } else if (symbol === "chevron.down") {
            g.moveTo(2.5, 5); g.lineTo(7, 9.5); g.lineTo(11.5, 5)
        } else if (symbol === "waveform") {
            const bars = [4, 8, 12, 7, 3]
            for (let i = 0; i < bars.length; ++i) {
                const x = 2 + i * 2.5
                g.moveTo(x, 7 - bars[i] / 2); g.lineTo(x, 7 + bars[i] / 2)
            }
        } else if (symbol === "exclamationmark.circle") {
            g.arc(7, 7, 5.6, 0, Math.PI * 2)
            g.moveTo(7, 4); g.lineTo(7, 7.6)
            g.moveTo(7, 10); g.lineTo(7, 10.2)
        } else if (symbol === "circle.lefthalf.filled") {
            g.arc(7, 7, 5.6, 0, Math.PI * 2)
            g.stroke()
            g.beginPath()
            g.arc(7, 7, 5.6, Math.PI / 2, Math.PI * 1.5)
            g.closePath()
            g.fill()
        } else if (symbol === "speaker.wave.2.fill") {
            g.moveTo(1.5, 5); g.lineTo(4, 5); g.lineTo(7, 2); g.lineTo(7, 12); g.lineTo(4, 9)
            g.lineTo(1.5, 9); g.closePath()
            g.fill()
            g.beginPath()
            g.arc(7, 7, 3, -Math.PI / 4, Math.PI / 4)
            g.moveTo(11.2, 2.8); g.arc(7, 7, 6, -Math.PI / 4, Math.PI / 4)
        } else if (symbol === "music.note.list") {
            g.moveTo(1.5, 3); g.lineTo(7, 3)
            g.moveTo(1.5, 6); g.lineTo(7, 6)
            g.moveTo(1.5, 9); g.lineTo(5, 9)
            g.moveTo(11, 11); g.lineTo(11, 2); g.lineTo(13, 3)
            g.stroke()
            g.beginPath()
            g.ellipse(7.4, 9.6, 3.8, 3)
            g.fill()
        } else if (symbol === "arrow.triangle.2.circlepath") {
            g.arc(7, 7, 5, Math.PI * 1.1, Math.PI * 1.9)
            g.moveTo(12, 4.2); g.lineTo(11.3, 6.6); g.lineTo(9, 5.6)
            g.moveTo(12, 7); g.arc(7, 7, 5, Math.PI * 0.1, Math.PI * 0.9)
            g.moveTo(2, 9.8); g.lineTo(2.7, 7.4); g.lineTo(5, 8.4)
        } else if (symbol === "checkmark") {
            g.moveTo(2.5, 7.5); g.lineTo(5.8, 10.8); g.lineTo(11.5, 3.5)
        } else if (symbol === "arrow.down.circle.fill") {
            g.arc(7, 7, 6, 0, Math.PI * 2)
            g.fill()
            g.beginPath()
            g.strokeStyle = SettingsStyle.cardColour
            g.moveTo(7, 3.5); g.lineTo(7, 10)
            g.moveTo(4.2, 7.4); g.lineTo(7, 10.2); g.lineTo(9.8, 7.4)
        } else if (symbol === "sparkles") {
            g.moveTo(5.5, 2); g.quadraticCurveTo(6, 7, 10, 7.5); g.quadraticCurveTo(6, 8, 5.5, 13)
            g.quadraticCurveTo(5, 8, 1, 7.5); g.quadraticCurveTo(5, 7, 5.5, 2)
            g.moveTo(11, 1); g.lineTo(11, 4.5); g.moveTo(9.3, 2.75); g.lineTo(12.7, 2.75)
        }
        g.stroke()
    }
}
