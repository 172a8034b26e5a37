import QtQuick
import QtTest
import SlatewiseStage
import SlatewiseViews

// The whole screen over a fresh stage for each test function: A001 (CamA, in focus) and B004 (CamB)
// are ticked, SES_MIX_02 is not; of the disks SHUTTLE_01 and RAID Backup both are. `find` looks up
// what is in the screen by object name, below `within` when an item is given.
TestCase {
    id: testCase

    property Stage stage: null
    property AppModel model: null
    property var root: null
    property Component stages: Component { Stage {} }
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
        stage = stages.createObject(testCase)
        stage.play(scene)
        model = stage.model
        root = screen.createObject(testCase, { appModel: model })
        waitForRendering(root)
    }
    // Views go before the model that they show.
    function cleanup() {
        root.destroy()
        wait(0)
        stage.destroy()
        wait(0)
    }

    function find(name, within) {
        const item = findChild(within ?? root, name)
        verify(item, name)
        return item
    }
    function row(list, index) {
        const view = find("list", find(list))
        view.forceLayout()
        tryVerify(() => view.itemAtIndex(index) !== null)
        return view.itemAtIndex(index)
    }
    function names(list) {
        const view = find("list", find(list))
        view.forceLayout()
        return Array.from({ length: view.count }, (_, index) => row(list, index).name)
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
