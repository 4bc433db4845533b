#include "page/page_text.h"

#include <cctype>

#include <nlohmann/json.hpp>

namespace vantrel::page {

namespace {

using Json = nlohmann::json;

std::string dumped(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

std::string filledIn(std::string text, const std::string& name, const std::string& value) {
    for (auto at = text.find(name); at != std::string::npos; at = text.find(name, at + value.size()))
        text.replace(at, name.size(), value);
    return text;
}

Json jsonOf(const platform::LiveView::Adjuster& adjuster) {
    const MoveText move = splitMove(adjuster.move);
    return {{"name", adjuster.name},   {"arrow", adjuster.arrow}, {"words", move.words},
            {"figures", move.figures}, {"sigma", adjuster.sigma}, {"bolt", adjuster.bolt}};
}

constexpr const char* kPage = R"page(<!doctype html>
<html><head><meta charset="utf-8"><title>Adjust</title>
<meta name="viewport" content="width=device-width,initial-scale=1">
<style nonce="@NONCE@">
:root{--ground:#fff;--ink:#111;--dim:#999;--line:#bbb;--good:#060}
.night{--ground:#000;--ink:#f20800;--dim:#700400;--line:#500300;--good:#f20800}
*{box-sizing:border-box;margin:0}
body{background:var(--ground);color:var(--ink);font:5vw/1.2 sans-serif;padding:2vw 3vw;max-width:36rem;margin:auto}
#verdict{font-weight:bold;min-height:2.4em}
section{border-top:1px solid var(--line);padding:1vw 0;display:grid;grid-template-columns:22vw 1fr;align-items:center}
.arrow{font-size:22vw;line-height:1;grid-row:1/4;text-align:center}
.words{font-size:7vw}
.figures{font-size:21vw;line-height:1;font-weight:bold;white-space:nowrap}
.stale .figures,.stale .words,.stale .arrow,.stale #total{color:var(--dim)}
#foot{border-top:1px solid var(--line);padding:1vw 0;display:flex;flex-wrap:wrap;justify-content:space-between}
#lost{width:100%;font-weight:bold}
#sights{display:flex;gap:2vw;align-items:start;margin-top:2vw}
#sights>*{flex:1;min-width:0}
#dial svg{width:100%;height:auto}
#frame{background:var(--ground)}
#picture{width:100%;display:block}
.night #frame{background:#f20800}
.night #picture{mix-blend-mode:multiply}
.night svg rect{fill:#000}
.night svg line,.night svg circle,.night svg ellipse{stroke:#f20800}
.night svg text,.night svg circle[fill-opacity]{fill:#f20800}
button{width:100%;font:bold 8vw sans-serif;padding:3vw;margin-top:2vw;color:var(--ink);background:var(--ground);border:2px solid var(--ink);border-radius:2vw}
button:disabled{color:var(--dim);border-color:var(--line)}
[hidden]{display:none!important}
@media(orientation:landscape) and (max-height:32rem){
body{display:grid;grid-template-columns:1fr 1fr;column-gap:3vw;max-width:none;font-size:5.5vh;padding:1vh 3vw}
#verdict,#foot,button,#sights{grid-column:1/3}
#verdict{min-height:1.2em}
section{grid-template-columns:20vh 1fr;align-content:start;padding:1vh 0}
.arrow{font-size:20vh}.figures{font-size:23vh}.words{font-size:7.5vh}
button{font-size:9vh;padding:2vh;margin-top:1vh}
}
@media(min-width:36rem) and (min-height:32rem){body{font-size:1.8rem}.arrow,.figures{font-size:7.5rem}.words{font-size:2.5rem}section{grid-template-columns:8rem 1fr}button{font-size:2.8rem}}
</style></head><body class="night stale">
<p id="verdict"></p>
<section id="azimuth"><div class="arrow"></div><div class="words"></div><div class="figures"></div><div class="more"></div></section>
<section id="elevation"><div class="arrow"></div><div class="words"></div><div class="figures"></div><div class="more"></div></section>
<div id="foot"><span id="total"></span><span id="age"></span><span id="lost" role="alert" hidden>Connection lost</span></div>
<button id="stop" disabled>Stop</button>
<div id="sights"><div id="dial"></div><div id="frame" hidden><img id="picture" alt=""></div></div>
<script nonce="@NONCE@">
'use strict';
const base='@BASE@';
const at=id=>document.getElementById(id);
let view=null, heard=0, shownPicture=0, shownDial=null;
function fill(id,a){
  const s=at(id), put=(c,t)=>s.querySelector(c).textContent=t;
  put('.arrow',a.arrow);put('.words',a.name+(a.words?': '+a.words:''));put('.figures',a.figures);
  put('.more',[a.sigma,a.bolt].filter(t=>t).join(' · '));
}
function draw(dial){
  shownDial=dial;at('dial').innerHTML=dial;
  const svg=at('dial').firstElementChild;
  if(svg)svg.setAttribute('viewBox','0 0 '+svg.getAttribute('width')+' '+svg.getAttribute('height'));
}
function tick(){
  const since=(performance.now()-heard)/1000, lost=!view||since>8;
  at('lost').hidden=!view&&performance.now()<3000||!lost;
  document.body.classList.toggle('stale',lost||view.stale);
  if(!view)return;
  at('age').textContent=view.age===null?'':Math.floor(view.age+(view.live||lost?since:0))+' s old';
  at('stop').disabled=lost||!view.stoppable;
}
function show(e){
  view=JSON.parse(e.data);heard=performance.now();
  document.body.classList.toggle('night',view.night);
  at('verdict').textContent=view.verdict;
  fill('azimuth',view.azimuth);fill('elevation',view.elevation);
  at('total').textContent=view.total;
  if(view.dial!==shownDial)draw(view.dial);
  at('frame').hidden=!view.picture;
  if(view.picture&&view.picture!==shownPicture){shownPicture=view.picture;at('picture').src=base+'/picture/'+view.picture;}
  tick();
}
let events=null;
function listen(){
  if(events)events.close();
  events=new EventSource(base+'/events');
  events.onmessage=show;
  events.onerror=()=>{if(events.readyState===2)setTimeout(listen,2000);};
}
at('stop').onclick=()=>fetch(base+'/stop',{method:'POST'}).catch(()=>{});
document.onvisibilitychange=()=>{if(!document.hidden)listen();};
setInterval(tick,500);
listen();
</script></body></html>
)page";

}  // namespace

MoveText splitMove(const std::string& move) {
    const auto blank = move.rfind(' ');
    const bool figures = blank != std::string::npos && blank + 1 < move.size() &&
                         std::isdigit(static_cast<unsigned char>(move[blank + 1])) != 0;
    if (figures) return {move.substr(0, blank), move.substr(blank + 1)};
    return {move, ""};
}

std::string policyOf(const std::string& nonce) {
    return "default-src 'none'; script-src 'nonce-" + nonce + "'; style-src 'nonce-" + nonce +
           "'; connect-src 'self'; img-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors "
           "'none'";
}

std::string pageText(const std::string& base, const std::string& nonce) {
    return filledIn(filledIn(kPage, "@NONCE@", nonce), "@BASE@", base);
}

std::string eventText(const platform::LiveView& view, std::uint64_t picture) {
    const Json json{{"azimuth", jsonOf(view.azimuth)},
                    {"elevation", jsonOf(view.elevation)},
                    {"verdict", view.verdict},
                    {"total", view.total},
                    {"age", view.age ? Json(*view.age) : Json()},
                    {"live", view.live},
                    {"stale", view.stale},
                    {"stoppable", view.stoppable},
                    {"night", view.night},
                    {"dial", view.dial},
                    {"picture", picture}};
    return "data: " + dumped(json) + "\n\n";
}

}  // namespace vantrel::page
