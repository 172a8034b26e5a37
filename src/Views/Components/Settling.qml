import QtQml

// A while after something has changed places, in which a click may still be meant for what was there
// before. By the clock and not by a timer: timers stand still with the pictures.
QtObject {
    // Milliseconds.
    property int duration: 500
    property double begin: 0

    function restart() {
        begin = Date.now()
    }
    // A clock that was set back ends it too.
    function isOver() {
        const passed = Date.now() - begin
        return passed < 0 || passed > duration
    }
}
