import QtQuick

// The assistant's symbols, drawn here so they look the same under every icon theme. `symbol`
// takes the names the pages use ("waveform", "heart.fill", ...); they are drawn on a 24 grid.
Canvas {
    id: glyph
    property string symbol
    property color colour: SetupStyle.textColour
    width: 24
    height: 24
    onSymbolChanged: requestPaint()
    onColourChanged: requestPaint()
    onWidthChanged: requestPaint()

    function roundRect(g, x, y, w, h, r) {
        g.moveTo(x + r, y); g.arcTo(x + w, y, x + w, y + h, r); g.arcTo(x + w, y + h, x, y + h, r)
        g.arcTo(x, y + h, x, y, r); g.arcTo(x, y, x + w, y, r); g.closePath()
    }

    onPaint: {
        const g = getContext("2d")
        g.reset()
        g.scale(width / 24, height / 24)
        g.strokeStyle = colour
        g.fillStyle = colour
        g.lineWidth = 1.8
        g.lineCap = "round"
        g.lineJoin = "round"
        g.beginPath()
        let fill = false
        switch (symbol) {
        case "waveform": {
            const bars = [6, 12, 18, 10, 14, 5]
            for (let i = 0; i < bars.length; ++i) {
                const x = 4 + i * 3.2
                g.moveTo(x, 12 - bars[i] / 2); g.lineTo(x, 12 + bars[i] / 2)
            }
            break
        }
        case "photo":
            roundRect(g, 3, 5, 18, 14, 2.5)
            g.moveTo(5, 17); g.lineTo(10, 11.5); g.lineTo(13.5, 15); g.lineTo(16, 12.5); g.lineTo(19.5, 16.5)
            g.moveTo(16.6, 8.6); g.arc(15.5, 8.6, 1.1, 0, Math.PI * 2)
            break
        case "rectangle.topthird.inset.filled":
            roundRect(g, 2.5, 4, 19, 16, 3)
            g.stroke(); g.beginPath()
            roundRect(g, 8, 5.5, 8, 3.4, 1.7)
            fill = true
            break
        case "music.note.list":
            g.moveTo(3, 6); g.lineTo(12, 6); g.moveTo(3, 10.5); g.lineTo(12, 10.5); g.moveTo(3, 15); g.lineTo(9, 15)
            g.moveTo(18, 17); g.lineTo(18, 4.5); g.lineTo(21.5, 5.8)
            g.moveTo(18, 17.5); g.arc(16, 17.5, 2, 0, Math.PI * 2)
            break
        case "exclamationmark.triangle.fill":
            g.moveTo(12, 3); g.lineTo(22, 20.5); g.lineTo(2, 20.5); g.closePath()
            g.fill(); g.beginPath()
            g.strokeStyle = SetupStyle.windowColour
            g.lineWidth = 2.2
            g.moveTo(12, 9); g.lineTo(12, 14); g.moveTo(12, 17.3); g.lineTo(12, 17.4)
            break
        case "checkmark.circle.fill":
            g.arc(12, 12, 10, 0, Math.PI * 2)
            g.fill(); g.beginPath()
            g.strokeStyle = SetupStyle.windowColour
            g.lineWidth = 2.2
            g.moveTo(7.5, 12.3); g.lineTo(10.7, 15.5); g.lineTo(16.5, 8.8)
            break
        case "arrow.uturn.backward":
            g.moveTo(8, 5); g.lineTo(4, 9); g.lineTo(8, 13)
            g.moveTo(4, 9); g.lineTo(15, 9); g.arc(15, 14, 5, -Math.PI / 2, Math.PI / 2); g.lineTo(10, 19)
            break
        case "arrow.up.forward.app":
            roundRect(g, 3, 5, 16, 16, 3.5)
            g.moveTo(10, 14); g.lineTo(20.5, 3.5); g.moveTo(14, 3.5); g.lineTo(20.5, 3.5); g.lineTo(20.5, 10)
            break
        case "play.fill":
            g.moveTo(7, 4.5); g.lineTo(19.5, 12); g.lineTo(7, 19.5); g.closePath()
            fill = true
            break
        case "heart.fill":
            g.moveTo(12, 20.5)
            g.bezierCurveTo(3, 14.5, 2, 10, 3.5, 7); g.bezierCurveTo(5.5, 3.5, 10.5, 3.8, 12, 7.5)
            g.bezierCurveTo(13.5, 3.8, 18.5, 3.5, 20.5, 7); g.bezierCurveTo(22, 10, 21, 14.5, 12, 20.5)
            fill = true
            break
        case "person.fill":
            g.arc(12, 7.5, 4, 0, Math.PI * 2)
            g.fill(); g.beginPath()
            g.moveTo(4, 20.5); g.bezierCurveTo(4.5, 15, 8, 13, 12, 13); g.bezierCurveTo(16, 13, 19.5, 15, 20, 20.5)
            g.closePath()
            fill = true
            break
        case "hand.draw":
            g.moveTo(3, 17); g.bezierCurveTo(6, 10, 9, 10, 9.5, 14); g.bezierCurveTo(10, 18, 14, 17, 15, 12)
            g.bezierCurveTo(16, 7, 19, 6, 21, 8)
            g.moveTo(17.5, 5.5); g.lineTo(21, 8); g.lineTo(18, 11)
            break
        case "arrow.up.arrow.down":
            g.moveTo(8, 19); g.lineTo(8, 5); g.moveTo(4, 9); g.lineTo(8, 5); g.lineTo(12, 9)
            g.moveTo(16, 5); g.lineTo(16, 19); g.moveTo(12, 15); g.lineTo(16, 19); g.lineTo(20, 15)
            break
        case "arrow.up.right":
            g.moveTo(6, 18); g.lineTo(18, 6); g.moveTo(9, 6); g.lineTo(18, 6); g.lineTo(18, 15)
            break
        case "slider.horizontal.3":
            g.moveTo(3, 6); g.lineTo(21, 6); g.moveTo(3, 12); g.lineTo(21, 12); g.moveTo(3, 18); g.lineTo(21, 18)
            g.stroke(); g.beginPath()
            g.arc(8, 6, 2.3, 0, Math.PI * 2); g.moveTo(18.3, 12); g.arc(16, 12, 2.3, 0, Math.PI * 2)
            g.moveTo(12.3, 18); g.arc(10, 18, 2.3, 0, Math.PI * 2)
            fill = true
            break
        case "arrow.counterclockwise":
            g.arc(12, 12.5, 7.5, -Math.PI * 0.6, Math.PI * 1.15)
            g.moveTo(4, 4.5); g.lineTo(4.6, 9.4); g.lineTo(9.4, 8.4)
            break
        }
        if (fill) g.fill(); else g.stroke()
    }
}
