#include "headless/session.h"

#include <gtest/gtest.h>

#include "small_program.h"

namespace vantrel::headless::test {
namespace {

TEST(Session, OperatesControls) {
    SmallWorld().expect(R"~(
> {"id":1,"do":"click","control":"frmMain.cmdCount"}
< {"id":1,"ok":true}
> {"id":"a","do":"click","control":"FRMMAIN.CMDCOUNT"}
< {"id":"a","ok":true,"delivered":true}
> {"do":"read","control":"frmMain.txtCount"}
< {"ok":true,"text":"2","alignment":0,"enabled":true,"visible":true,"backColor":2147483653,"foreColor":2147483656}
> {"do":"click","control":"frmMain.cmdOff"}
< {"ok":true,"delivered":false}
> {"do":"type","control":"frmMain.txtCount","text":"41"}
> {"do":"click","control":"frmMain.cmdCount"}
> {"do":"leave","control":"frmMain.txtCount"}
> {"do":"check","control":"frmMain.chkLight","value":1}
> {"do":"check","control":"frmMain.chkLight","value":1}
> {"do":"click","control":"frmMain.optWay(1)"}
> {"do":"choose","control":"frmMain.cmbColor","item":"green"}
> {"do":"click","control":"frmMain"}
> {"do":"log","from":2}
< {"ok":true,"next":11,"lines":["12:00:00   count 1","12:00:00   count 2","12:00:00   count 41","12:00:00   count 42","12:00:00   left","12:00:00   light 1","12:00:00   two","12:00:00   green","12:00:00   window clicked"]}
> {"do":"log","from":11}
< {"ok":true,"next":11,"lines":[]}
> {"do":"read","control":"frmMain.cmbColor"}
< {"ok":true,"text":"green","items":["red","green"],"enabled":true,"visible":true,"backColor":2147483653,"foreColor":2147483656}
> {"do":"read","control":"frmMain.optWay(1)"}
< {"ok":true,"caption":"Two","value":1,"enabled":true,"visible":true,"backColor":2147483663,"foreColor":2147483666}
)~");
}

TEST(Session, KeysPassTheControlsFilter) {
    SmallWorld().expect(R"~(
> {"do":"key","control":"frmMain.txtDigits","code":50}
< {"ok":true,"delivered":true,"text":"12"}
> {"do":"key","control":"frmMain.txtDigits","code":65}
< {"ok":true,"delivered":true,"text":"12"}
> {"do":"key","control":"frmMain.txtDigits","code":8}
< {"ok":true,"delivered":true,"text":"1"}
> {"do":"key","control":"frmMain.cmdCount","code":8}
< {"ok":false,"error":"cmdCount is not a text box"}
> {"do":"key","control":"frmMain.txtDigits","code":1.5}
< {"ok":false,"error":"\"code\" must be a whole number"}
)~");
}

TEST(Session, TimeStandsStillBetweenCommands) {
    SmallWorld().expect(R"~(
> {"do":"time"}
< {"ok":true,"utc":"2026-11-24T20:00:00.000Z","seconds":0.0}
> {"do":"wait","for":{"log":"Started"},"seconds":60}
> {"do":"click","control":"frmMain.cmdWork"}
> {"do":"click","control":"frmMain.cmdCount"}
> {"do":"time"}
< {"ok":true,"utc":"2026-11-24T20:00:05.000Z","seconds":5.0}
> {"do":"advance","seconds":2.5}
> {"do":"log","from":2}
< {"ok":true,"next":5,"lines":["12:00:00   count 1","12:00:00   step 1","12:00:00   step 2"]}
> {"do":"wait","for":{"control":"frmMain.txtCount","property":"text","is":"1"},"seconds":0}
> {"do":"time"}
< {"ok":true,"utc":"2026-11-24T20:00:07.500Z","seconds":7.5}
)~");
}

TEST(Session, Waits) {
    SmallWorld().expect(R"~(
> {"do":"wait","for":{"window":"frmMain"},"seconds":60}
> {"do":"wait","for":{"idle":true},"seconds":60}
> {"do":"click","control":"frmMain.cmdWork"}
> {"do":"wait","for":{"log":"step"}}
> {"do":"wait","for":{"log":"step"}}
> {"do":"wait","for":{"log":"step 1"},"seconds":3}
< {"ok":false,"timeout":true,"error":"Waited in vain"}
> {"do":"wait","for":{"idle":true},"seconds":4.9}
< {"ok":false,"timeout":true,"error":"Waited in vain"}
> {"do":"wait","for":{"idle":true},"seconds":1}
> {"do":"time"}
< {"ok":true,"utc":"2026-11-24T20:00:15.000Z","seconds":15.0}
> {"do":"wait","for":{"log":"step 1"},"seconds":0}
> {"do":"wait","for":{"control":"frmMain.chkLight","property":"enabled","is":1},"seconds":0}
> {"do":"wait","for":{"control":"frmMain.chkLight","property":"value","is":1},"seconds":600}
< {"ok":false,"timeout":true,"error":"Waited in vain"}
)~");
}

TEST(Session, PreparesTheSceneBeforeTheStart) {
    SmallWorld().expect(R"~(
> {"do":"setting","section":"Main","key":"A","value":"x"}
< {"ok":true,"value":"x"}
> {"do":"fault","object":"small.mount","member":"rightascension","number":-2147352567,"source":"Mount","description":"Stuck","after":1,"times":1}
> {"do":"journal","object":"Small.Mount"}
< {"ok":true,"journal":[]}
> {"do":"log"}
< {"ok":true,"next":2,"lines":["12:00:00   Starting","12:00:00   Started"]}
> {"do":"journal","object":"Small.Mount"}
< {"ok":true,"journal":[{"kind":"create","member":"create","args":[]},{"kind":"put","member":"RightAscension","args":[3.5]}]}
> {"do":"setting","section":"main","key":"a"}
< {"ok":true,"value":"x"}
> {"do":"setting","section":"main","key":"a","remove":true}
< {"ok":true,"value":null}
)~");
}

TEST(Session, CommandsWaitForTheStartUnlessItAsks) {
    SmallWorld world;
    world.program.asks = true;
    world.expect(R"~(
> {"do":"windows"}
< {"ok":true,"windows":[{"form":"frmQuestion","title":"","left":0,"top":0,"width":0,"height":0,"onTop":false}]}
> {"do":"close","window":"frmQuestion"}
> {"do":"windows"}
< {"ok":true,"windows":[{"form":"frmMain","title":"Small","left":10,"top":20,"width":300,"height":200,"onTop":false}]}
> {"do":"close","window":"frmQuestion"}
< {"ok":true,"delivered":false}
)~");
}

TEST(Session, ReachesOutsidePrograms) {
    SmallWorld().expect(R"~(
> {"do":"automation","object":"Small.Mount","get":"RightAscension"}
< {"ok":true,"value":3.5}
> {"do":"automation","object":"small.mount","put":"RightAscension","value":7}
< {"ok":true,"value":null}
> {"do":"automation","object":"Small.Mount","call":"Slew","args":["8.25"]}
< {"ok":true,"value":null}
> {"do":"automation","object":"Small.Mount","get":"rightascension"}
< {"ok":true,"value":8.25}
> {"do":"automation","object":"Small.Mount","get":"Itself"}
< {"ok":true,"value":{"object":"Small.Mount"}}
> {"do":"automation","object":"Small.Mount","get":"Nothing"}
< {"ok":false,"error":"438: Object doesn't support this property or method","number":438,"source":"Small.Mount","description":"Object doesn't support this property or method"}
> {"do":"automation","object":"Other.Mount","get":"Nothing"}
< {"ok":false,"error":"429: ActiveX component can't create object","number":429,"source":"Vantrel","description":"ActiveX component can't create object"}
> {"do":"automation","object":"Small.Mount","call":"Slew","args":{"ra":1}}
< {"ok":false,"error":"\"args\" must be a list"}
> {"do":"journal","object":"*"}
< {"ok":true,"journal":[{"object":"Small.Mount","kind":"create","member":"create","args":[]},{"object":"Small.Mount","kind":"put","member":"RightAscension","args":[3.5]}]}
)~");
}

TEST(Session, ShowsDrawingsPopupsAndBoxes) {
    SmallWorld world;
    world.program.window.picPlot.setDrawing(
        {{-10, 10, 10, -10},
         {Circle{1, 2, 3, true, 255}, Line{0, 1, 2, 3, 0}, DrawnText{4, 5, "N", 16711680}}});
    world.dialogs.messageBox("Small", "Hello", Dialogs::Icon::kInformation, Dialogs::Buttons::kOk);
    world.expect(R"~(
> {"do":"drawing","control":"frmMain.picPlot"}
< {"ok":true,"drawing":[{"kind":"circle","x":1.0,"y":2.0,"r":3.0,"filled":true,"color":255},{"kind":"line","x1":0.0,"y1":1.0,"x2":2.0,"y2":3.0,"color":0},{"kind":"text","x":4.0,"y":5.0,"text":"N","color":16711680}],"scale":{"left":-10.0,"top":10.0,"right":10.0,"bottom":-10.0}}
> {"do":"click","control":"frmMain.cmdWork"}
> {"do":"popups"}
< {"ok":true,"popups":[{"time":"2026-11-24T20:00:05.000Z","text":"Working","seconds":5.0}]}
> {"do":"boxes"}
< {"ok":true,"boxes":[{"time":"2026-11-24T20:00:00.000Z","text":"Hello","seconds":0,"title":"Small"}]}
)~");
}

TEST(Session, RefusesWhatItDoesNotKnowAndGoesOn) {
    const std::pair<const char*, const char*> cases[] = {
        {R"~(not json)~", "Not JSON"},
        {"\x01\xff\xfe", "Not JSON"},
        {R"~({"do":"time")~", "Not JSON"},
        {"{\"do\":\"type\",\"text\":\"\xff\"}", "Not JSON"},
        {R"~([1,2])~", "Not a JSON object"},
        {R"~({})~", "\"do\" is missing"},
        {R"~({"do":5})~", "\"do\" must be a text"},
        {R"~({"do":"dance"})~", "Unknown command: dance"},
        {R"~({"do":"time","zone":"UTC"})~", "Unknown field: zone"},
        {R"~({"do":"click"})~", "\"control\" is missing"},
        {R"~({"do":"click","control":"frmMain.cmdNone"})~", "No such control: frmMain.cmdNone"},
        {R"~({"do":"click","control":"frmNone"})~", "No such window: frmNone"},
        {R"~({"do":"click","control":"frmMain.txtCount"})~", "txtCount can't be clicked"},
        {R"~({"do":"type","control":"frmMain.cmdCount","text":"1"})~", "cmdCount can't be typed into"},
        {R"~({"do":"choose","control":"frmMain.cmbColor","item":"blue"})~", "cmbColor has no entry \"blue\""},
        {R"~({"do":"check","control":"frmMain.chkLight","value":2})~", "\"value\" must be 0 or 1"},
        {R"~({"do":"check","control":"frmMain.optWay(0)","value":0})~", "optWay(0) can't be cleared"},
        {R"~({"do":"drawing","control":"frmMain.cmdCount"})~", "cmdCount is not a picture"},
        {R"~({"do":"advance","seconds":-1})~", "\"seconds\" must be a number of seconds from 0 to a year"},
        {R"~({"do":"advance","seconds":1e300})~", "\"seconds\" must be a number of seconds from 0 to a year"},
        {R"~({"do":"log","from":-1})~", "\"from\" must not be negative"},
        {R"~({"do":"wait","for":{"window":"frmNone"}})~", "No such window: frmNone"},
        {R"~({"do":"wait","for":{"control":"frmMain.cmdCount","property":"text","is":""}})~",
         "cmdCount has no property \"text\""},
        {R"~({"do":"wait","for":{"idle":false}})~",
         "\"for\" must be {\"control\", \"property\", \"is\"}, {\"log\"}, {\"idle\": true} or {\"window\"}"},
        {R"~({"do":"wait","for":7})~",
         "\"for\" must be {\"control\", \"property\", \"is\"}, {\"log\"}, {\"idle\": true} or {\"window\"}"},
        {R"~({"do":"setting","section":"A","key":"B","value":[1]})~", "A setting's value must be a text"},
        {R"~({"do":"answer","dialog":"door","with":""})~",
         "\"dialog\" must be \"folder\", \"file\", \"chooser\" or \"box\""},
        {R"~({"do":"fault","object":"*","member":"M"})~", "Either \"number\" or \"returns\" is needed"},
        {R"~({"do":"automation","object":"Small.Mount"})~", "One of \"get\", \"put\" and \"call\" is needed"},
        {R"~({"do":"automation","object":"Small.Mount","put":"RightAscension","value":{"width":1,"height":1,"pixels":["x"]}})~",
         "\"pixels\" must hold numbers"},
        {R"~({"do":"automation","object":"Small.Mount","put":"RightAscension","value":{"width":20000,"height":0}})~",
         "13: Type mismatch"},
        {R"~({"do":"automation","object":"Small.Mount","put":"RightAscension","value":{"width":20001,"height":0}})~",
         "An image needs a sensible \"width\""},
        {R"~({"do":"image","save":"/tmp/x.fit"})~", "No imaging program shows an image"},
    };
    SmallWorld world;
    for (const auto& [command, error] : cases) world.commands.add(command);
    world.commands.add(std::string(5000, '['));
    world.commands.add(R"~({"do":"time","id":)~" + std::string(200, '[') + std::string(200, ']') + "}");
    world.commands.addTooLong();
    world.commands.add("   ");
    world.commands.add(R"~({"do":"click","control":"frmMain.cmdCount"})~");
    const auto& replies = world.run();
    ASSERT_EQ(replies.size(), std::size(cases) + 4);
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(replies[i]["ok"], false) << cases[i].first;
        EXPECT_EQ(replies[i]["error"], cases[i].second) << cases[i].first;
    }
    for (std::size_t i = std::size(cases); i + 1 < replies.size(); ++i) EXPECT_EQ(replies[i]["ok"], false);
    EXPECT_EQ(replies.back()["delivered"], true);
}

/// A folder text with a drive or backslashes is one of the folder map, anything else a path of the machine.
TEST(Session, SavesTheShownImageWhereItIsTold) {
    const std::pair<const char*, const char*> cases[] = {{R"(c:x.fit)", "/nowhere/c/x.fit"},
                                                         {R"(\\x.fit)", "/nowhere/c/x.fit"},
                                                         {"/nowhere/at/x.fit", "/nowhere/at/x.fit"}};
    for (const auto& [told, path] : cases) {
        SmallWorld world;
        world.images.open({"Shown", std::make_shared<const ImageArray>(1, 1, std::vector<float>{0}), {}});
        world.commands.add(std::string(R"({"do":"image","save":")") + told + "\"}");
        EXPECT_NE(world.run().at(0)["error"].get<std::string>().find(path), std::string::npos)
            << told << world.kept.replies;
    }
}

TEST(Session, EndsWithTheInputAndLetsWorkReturn) {
    struct Case {
        const char* why;
        const char* dialogue;
        double seconds;  // of program time at the end
    };
    const Case cases[] = {
        {"no command at all: the program starts and ends", "", 5},
        {"quit while a procedure runs: it returns at its next step",
         R"~(
> {"do":"click","control":"frmMain.cmdWork"}
> {"do":"advance","seconds":1.5}
> {"id":9,"do":"quit"}
< {"id":9,"ok":true}
> {"do":"time"}
< nothing
)~",
         7},
        {"the program was closed before: questions are still answered",
         R"~(
> {"do":"click","control":"frmMain.mnuExit"}
> {"do":"log","from":2}
< {"ok":true,"next":2,"lines":[]}
)~",
         5},
    };
    for (const Case& c : cases) {
        SmallWorld world;
        world.expect(c.dialogue);
        EXPECT_NEAR(static_cast<double>(world.time.sinceStart().count()) / 1000, c.seconds, 1.01) << c.why;
    }
}

}  // namespace
}  // namespace vantrel::headless::test
