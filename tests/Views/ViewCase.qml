import QtQuick
import QtTest
import SlatewiseStage
import SlatewiseViews

// The whole screen over a fresh staged model for each test function. `find` looks up what is in it by
// object name, below `within` when an item is given.
TestCase {
    id: testCase

    property var model: null
    property var root: null
    property Component stage: Component { StagedModel {} }
    property Component scenes: Component { Scenes {} }
    property Component screen: Component {
        SimpleRootView {
            anchors.fill: parent
            focus: true
        }
    }
    property string scene: "ready"

    when: windowShown
    width: 984
    height: 900
    visible: true

    function init() {
        model = createTemporaryObject(stage, testCase)
        createTemporaryObject(scenes, testCase, { model: model }).play(scene)
        model.calls = []
        root = screen.createObject(testCase, { appModel: model })
        waitForRendering(root)
    }
    // Views go before the model that they show.
    function cleanup() {
        root.destroy()
        wait(0)
    }

    function find(name, within) {
        const item = findChild(within ?? root, name)
        verify(item, name)
        return item
    }
    function row(list, index) {
        const view = find("list", find(list))
        tryVerify(() => view.itemAtIndex(index) !== null)
        return view.itemAtIndex(index)
    }
    function chip(block, index) {
        return find("chips", find(block)).itemAtIndex(index)
    }
    function field(block) {
        return find("field", find(block))
    }
    function focusItem() {
        return root.Window.window.activeFocusItem
    }
}
