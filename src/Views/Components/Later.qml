pragma Singleton
import QtQml

// Calls a function once the event at hand is over; asked several times meanwhile, once.
QtObject {
    function call(action) {
        // The checker does not know this as a function.
        Qt.callLater(action) // qmllint disable type
    }
}
