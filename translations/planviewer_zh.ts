<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>BarChart</name>
    <message>
        <source>Nothing to count yet</source>
        <translation>暂无可统计的内容</translation>
    </message>
</context>
<context>
    <name>ColumnLayout</name>
    <message>
        <source>&amp;Columns</source>
        <translation>列(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;Default columns</source>
        <translation>默认列(&amp;D)</translation>
    </message>
</context>
<context>
    <name>DetailsPanel</name>
    <message>
        <source>Details of the task</source>
        <translation>任务详情</translation>
    </message>
    <message>
        <source>Select a task to see its details.</source>
        <translation>选择一个任务以查看其详情。</translation>
    </message>
    <message>
        <source>State:</source>
        <translation>状态：</translation>
    </message>
    <message>
        <source>Planned:</source>
        <translation>计划：</translation>
    </message>
    <message>
        <source>Actual:</source>
        <translation>实际：</translation>
    </message>
    <message>
        <source>Done:</source>
        <translation>完成：</translation>
    </message>
    <message>
        <source>Workload, planned / actual:</source>
        <translation>工程量，计划 / 实际：</translation>
    </message>
    <message>
        <source>Remark:</source>
        <translation>备注：</translation>
    </message>
    <message>
        <source>People</source>
        <translation>人员</translation>
    </message>
    <message>
        <source>Responsible:</source>
        <translation>负责：</translation>
    </message>
    <message>
        <source>Executing:</source>
        <translation>执行：</translation>
    </message>
    <message>
        <source>Cooperating:</source>
        <translation>协作：</translation>
    </message>
    <message>
        <source>Documents</source>
        <translation>文档</translation>
    </message>
    <message>
        <source>Material bills</source>
        <translation>物料清单</translation>
    </message>
    <message>
        <source>Linked entities</source>
        <translation>关联构件</translation>
    </message>
    <message>
        <source>Reports</source>
        <translation>反馈</translation>
    </message>
    <message>
        <source>Show what was reported</source>
        <translation>显示反馈记录</translation>
    </message>
    <message>
        <source>Nothing was reported yet.</source>
        <translation>尚无反馈。</translation>
    </message>
    <message>
        <source>a task that is not in the plan</source>
        <translation>不在计划中的任务</translation>
    </message>
    <message>
        <source>Predecessors</source>
        <translation>前置任务</translation>
    </message>
    <message>
        <source>Photos and videos:</source>
        <translation>照片和视频：</translation>
    </message>
</context>
<context>
    <name>ElementSelection</name>
    <message>
        <source>Element %1: no task names it.</source>
        <translation>构件 %1：没有任务关联它。</translation>
    </message>
    <message>
        <source>Element %1</source>
        <translation>构件 %1</translation>
    </message>
</context>
<context>
    <name>FloorHeightsModel</name>
    <message>
        <source>Floor</source>
        <translation>楼层</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>层高</translation>
    </message>
</context>
<context>
    <name>FloorHeightsPanel</name>
    <message>
        <source>Floors and their heights</source>
        <translation>楼层及其层高</translation>
    </message>
    <message>
        <source>How far the floors stand apart</source>
        <translation>楼层分开的距离</translation>
    </message>
    <message>
        <source>Default &amp;heights</source>
        <translation>默认层高(&amp;H)</translation>
    </message>
    <message>
        <source>Ta&amp;ke apart</source>
        <translation>分层展开(&amp;K)</translation>
    </message>
</context>
<context>
    <name>FrameExport</name>
    <message>
        <source>the picture %1 could not be drawn; try again with a smaller one</source>
        <translation>无法绘制图片 %1；请用较小的尺寸重试</translation>
    </message>
    <message>
        <source>the picture %1 cannot be written: %2</source>
        <translation>无法写入图片 %1：%2</translation>
    </message>
    <message>
        <source>the plan has no dates, so there is nothing to play</source>
        <translation>计划没有日期，无可播放</translation>
    </message>
    <message>
        <source>a picture has sides from %1 to %2 pixels</source>
        <translation>图片边长为 %1 到 %2 像素</translation>
    </message>
    <message>
        <source>frames and days in a second have to be more than 0</source>
        <translation>每秒帧数和天数必须大于 0</translation>
    </message>
    <message>
        <source>there would be more than %1 frames; play faster, or with fewer frames in a second</source>
        <translation>将超过 %1 帧；请加快播放，或减少每秒帧数</translation>
    </message>
    <message>
        <source>the folder %1 cannot be made; choose another one</source>
        <translation>无法创建文件夹 %1；请另选</translation>
    </message>
</context>
<context>
    <name>FrameExportDialog</name>
    <message>
        <source>&amp;Write</source>
        <translation>写入(&amp;W)</translation>
    </message>
    <message>
        <source>Export frames</source>
        <translation>导出帧</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>选择(&amp;H)…</translation>
    </message>
    <message>
        <source>&amp;Folder</source>
        <translation>文件夹(&amp;F)</translation>
    </message>
    <message>
        <source>&amp;Size</source>
        <translation>尺寸(&amp;S)</translation>
    </message>
    <message>
        <source>Frames in a &amp;second</source>
        <translation>每秒帧数(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>取消(&amp;C)</translation>
    </message>
    <message>
        <source>Folder of the frames</source>
        <translation>帧的文件夹</translation>
    </message>
    <message>
        <source>%1 frames, %2 days of the schedule in a second</source>
        <translation>%1 帧，每秒 %2 天</translation>
    </message>
    <message>
        <source>%1 of these frames are in the folder already.</source>
        <translation>文件夹中已有其中 %1 帧。</translation>
    </message>
    <message>
        <source>&amp;Write over them</source>
        <translation>覆盖(&amp;W)</translation>
    </message>
    <message>
        <source>&amp;Keep them</source>
        <translation>保留(&amp;K)</translation>
    </message>
</context>
<context>
    <name>GanttChart</name>
    <message>
        <source>Gantt chart</source>
        <translation>甘特图</translation>
    </message>
</context>
<context>
    <name>GanttExport</name>
    <message>
        <source>A picture&apos;s name ends in .png, .svg or .pdf.</source>
        <translation>图片的文件名应以 .png、.svg 或 .pdf 结尾。</translation>
    </message>
    <message>
        <source>The picture would be too large; zoom out, collapse tasks, or take SVG or PDF.</source>
        <translation>图片过大；请缩小比例、折叠任务，或选择 SVG 或 PDF。</translation>
    </message>
    <message>
        <source>The picture could not be painted; it may be too large.</source>
        <translation>图片无法绘制，可能过大。</translation>
    </message>
</context>
<context>
    <name>GraphicsCheck</name>
    <message>
        <source>the building cannot be shown: there is no OpenGL 3.2 here; everything else works; to see it, use a desktop with a graphics driver or set LIBGL_ALWAYS_SOFTWARE=1</source>
        <translation>无法显示建筑：此处没有 OpenGL 3.2；其他功能均可使用；如需查看，请使用带显卡驱动的桌面，或设置 LIBGL_ALWAYS_SOFTWARE=1</translation>
    </message>
</context>
<context>
    <name>ImportCheck</name>
    <message>
        <source>task %1 &quot;%2&quot;</source>
        <translation>任务 %1“%2”</translation>
    </message>
    <message>
        <source>it holds &quot;AllPlanNodes&quot;, as an exported plan does; a schedule file to import has &quot;AllTasks&quot;</source>
        <translation>文件中是 &quot;AllPlanNodes&quot;，即导出的计划；要导入的进度文件应包含 &quot;AllTasks&quot;</translation>
    </message>
    <message>
        <source>there is no list &quot;AllTasks&quot; in it; is this a schedule file?</source>
        <translation>文件中没有 &quot;AllTasks&quot; 列表；这是进度文件吗？</translation>
    </message>
    <message>
        <source>%1 has &quot;%2&quot; %3, which is no date as 2024-03-05T08:00:00 is one</source>
        <translation>%1 的 &quot;%2&quot; 是 %3，不是 2024-03-05T08:00:00 这样的日期</translation>
    </message>
    <message>
        <source>entry %1 of &quot;AllTasks&quot; is no task object</source>
        <translation>&quot;AllTasks&quot; 的第 %1 项不是任务对象</translation>
    </message>
    <message>
        <source>%1 has the unique id of %2</source>
        <translation>%1 与 %2 的唯一编号相同</translation>
    </message>
    <message>
        <source>%1 names parent %2, which does not exist</source>
        <translation>%1 的上级任务 %2 不存在</translation>
    </message>
    <message>
        <source>%1 has predecessor %2, which does not exist</source>
        <translation>%1 的前置任务 %2 不存在</translation>
    </message>
    <message>
        <source>parents in a circle: task %1</source>
        <translation>上级任务构成循环：任务 %1</translation>
    </message>
    <message>
        <source> under </source>
        <translation> 属于 </translation>
    </message>
</context>
<context>
    <name>JsonFile</name>
    <message>
        <source>the file has more than %1 bytes, too many for one plan</source>
        <translation>文件超过 %1 字节，对一个计划来说太大</translation>
    </message>
    <message>
        <source>it could not be read to its end: %1</source>
        <translation>未能读完文件：%1</translation>
    </message>
    <message>
        <source>line %1, column %2</source>
        <translation>第 %1 行第 %2 列</translation>
    </message>
    <message>
        <source>the file is empty</source>
        <translation>文件是空的</translation>
    </message>
    <message>
        <source>no valid JSON at %1: %2</source>
        <translation>%1 处不是有效的 JSON：%2</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>&amp;Plan</source>
        <translation>计划(&amp;P)</translation>
    </message>
    <message>
        <source>&amp;Open</source>
        <translation>打开(&amp;O)</translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation>保存(&amp;S)…</translation>
    </message>
    <message>
        <source>Read &amp;again</source>
        <translation>重新读取(&amp;A)</translation>
    </message>
    <message>
        <source>Export &amp;Gantt chart…</source>
        <translation>导出甘特图(&amp;G)…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>退出(&amp;Q)</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>编辑(&amp;E)</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>撤销</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>重做</translation>
    </message>
    <message>
        <source>&amp;Add task</source>
        <translation>添加任务(&amp;A)</translation>
    </message>
    <message>
        <source>Add &amp;subtask</source>
        <translation>添加子任务(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Report progress…</source>
        <translation>反馈进度(&amp;R)…</translation>
    </message>
    <message>
        <source>&amp;Find a task</source>
        <translation>查找任务(&amp;F)</translation>
    </message>
    <message>
        <source>Find &amp;next</source>
        <translation>查找下一个(&amp;N)</translation>
    </message>
    <message>
        <source>Find &amp;plans</source>
        <translation>查找计划(&amp;P)</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>视图(&amp;V)</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>放大(&amp;I)</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>缩小(&amp;O)</translation>
    </message>
    <message>
        <source>&amp;Whole plan</source>
        <translation>整个计划(&amp;W)</translation>
    </message>
    <message>
        <source>&amp;Today</source>
        <translation>今天(&amp;T)</translation>
    </message>
    <message>
        <source>&amp;Expand all</source>
        <translation>全部展开(&amp;E)</translation>
    </message>
    <message>
        <source>&amp;Collapse all</source>
        <translation>全部折叠(&amp;C)</translation>
    </message>
    <message>
        <source>Colour by &amp;state</source>
        <translation>按状态着色(&amp;S)</translation>
    </message>
    <message>
        <source>Colour by &amp;plan</source>
        <translation>按计划着色(&amp;P)</translation>
    </message>
    <message>
        <source>&amp;Appearance</source>
        <translation>外观(&amp;A)</translation>
    </message>
    <message>
        <source>As the &amp;system</source>
        <translation>跟随系统(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>浅色(&amp;L)</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>深色(&amp;D)</translation>
    </message>
    <message>
        <source>The language changes with the next start.</source>
        <translation>语言将在下次启动时更改。</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>工具</translation>
    </message>
    <message>
        <source>Find a task</source>
        <translation>查找任务</translation>
    </message>
    <message>
        <source>Plans</source>
        <translation>计划列表</translation>
    </message>
    <message>
        <source>Plan</source>
        <translation>计划</translation>
    </message>
    <message>
        <source>Statistics</source>
        <translation>统计</translation>
    </message>
    <message>
        <source>Waiting</source>
        <translation>等待中</translation>
    </message>
    <message>
        <source>Waiting: %1 …</source>
        <translation>等待：%1 …</translation>
    </message>
    <message>
        <source>Plan (edited)</source>
        <translation>计划（已修改）</translation>
    </message>
    <message>
        <source>Open a plan first.</source>
        <translation>请先打开一个计划。</translation>
    </message>
    <message>
        <source>You may not edit plans of this category.</source>
        <translation>您无权编辑此类别的计划。</translation>
    </message>
    <message>
        <source>Nothing was changed.</source>
        <translation>没有任何修改。</translation>
    </message>
    <message>
        <source>Select a task first.</source>
        <translation>请先选择一个任务。</translation>
    </message>
    <message>
        <source>Save your changes first.</source>
        <translation>请先保存修改。</translation>
    </message>
    <message>
        <source>You may not export plans of this category.</source>
        <translation>您无权导出此类别的计划。</translation>
    </message>
    <message>
        <source>Unsaved changes</source>
        <translation>未保存的修改</translation>
    </message>
    <message>
        <source>The plan &quot;%1&quot; has changes that are not saved.</source>
        <translation>计划“%1”有未保存的修改。</translation>
    </message>
    <message>
        <source>&amp;Discard</source>
        <translation>放弃(&amp;D)</translation>
    </message>
    <message>
        <source>&amp;Keep editing</source>
        <translation>继续编辑(&amp;K)</translation>
    </message>
    <message>
        <source>Export the Gantt chart</source>
        <translation>导出甘特图</translation>
    </message>
    <message>
        <source>Picture (*.png);;Drawing (*.svg);;Document (*.pdf)</source>
        <translation>图片 (*.png);;矢量图 (*.svg);;文档 (*.pdf)</translation>
    </message>
    <message>
        <source>Written: %1</source>
        <translation>已写入：%1</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be written.</source>
        <translation>无法写入“%1”。</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>关闭(&amp;C)</translation>
    </message>
    <message>
        <source>No task contains &quot;%1&quot;.</source>
        <translation>没有任务包含“%1”。</translation>
    </message>
    <message>
        <source>Nothing was undone.</source>
        <translation>没有可重做的操作。</translation>
    </message>
    <message>
        <source>The plan &quot;%1&quot; has changes that the service has not kept yet. They can be saved once it has answered what it is being asked now.</source>
        <translation>计划“%1”有服务尚未保存的修改。等服务答复当前的请求后才能保存。</translation>
    </message>
    <message>
        <source>Open a model first.</source>
        <translation>请先打开模型。</translation>
    </message>
    <message>
        <source>Simulation</source>
        <translation>模拟</translation>
    </message>
    <message>
        <source>&amp;Simulation</source>
        <translation>模拟(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Show the simulation</source>
        <translation>显示模拟(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Open a model…</source>
        <translation>打开模型(&amp;O)…</translation>
    </message>
    <message>
        <source>&amp;Play or pause</source>
        <translation>播放或暂停(&amp;P)</translation>
    </message>
    <message>
        <source>&amp;Whole building</source>
        <translation>整栋建筑(&amp;W)</translation>
    </message>
    <message>
        <source>Export a p&amp;icture…</source>
        <translation>导出图片(&amp;I)…</translation>
    </message>
    <message>
        <source>Export &amp;frames…</source>
        <translation>导出帧(&amp;F)…</translation>
    </message>
    <message>
        <source>Open a model</source>
        <translation>打开模型</translation>
    </message>
    <message>
        <source>Export a picture of the simulation</source>
        <translation>导出模拟图片</translation>
    </message>
    <message>
        <source>Picture (*.png *.jpg)</source>
        <translation>图片 (*.png *.jpg)</translation>
    </message>
    <message>
        <source>%1 frames written.</source>
        <translation>已写入 %1 帧。</translation>
    </message>
    <message>
        <source>Canceled after %1 frames.</source>
        <translation>写入 %1 帧后取消。</translation>
    </message>
</context>
<context>
    <name>ModelFile</name>
    <message>
        <source>Building models (*.gltf *.glb *.obj)</source>
        <translation>建筑模型 (*.gltf *.glb *.obj)</translation>
    </message>
    <message>
        <source>there is no model file %1; choose another one</source>
        <translation>没有模型文件 %1；请另选一个</translation>
    </message>
    <message>
        <source>%1 is no file; choose a model file (.gltf, .glb or .obj)</source>
        <translation>%1 不是文件；请选择模型文件（.gltf、.glb 或 .obj）</translation>
    </message>
    <message>
        <source>%1 is no model file by its name; choose a .gltf, .glb or .obj file</source>
        <translation>从名称看 %1 不是模型文件；请选择 .gltf、.glb 或 .obj 文件</translation>
    </message>
    <message>
        <source>the model file %1 is empty; export the model again</source>
        <translation>模型文件 %1 是空的；请重新导出模型</translation>
    </message>
    <message>
        <source>the model file %1 has %2 MB, more than the %3 MB that are read; export the model without details that the schedule does not name</source>
        <translation>模型文件 %1 有 %2 MB，超过可读取的 %3 MB；请导出不含进度计划未涉及细节的模型</translation>
    </message>
    <message>
        <source>the model file %1 cannot be read: %2; check its permissions</source>
        <translation>无法读取模型文件 %1：%2；请检查其权限</translation>
    </message>
    <message>
        <source>the file %1 holds no building model; choose a glTF or OBJ file</source>
        <translation>文件 %1 中没有建筑模型；请选择 glTF 或 OBJ 文件</translation>
    </message>
</context>
<context>
    <name>ModelReader</name>
    <message>
        <source>reading the model file %1 was given up after %2 minutes; export the model without details that the schedule does not name</source>
        <translation>读取模型文件 %1 超过 %2 分钟后已放弃；请导出不含进度计划未涉及细节的模型</translation>
    </message>
    <message>
        <source>the program %1, which reads model files, cannot be started; install planviewer again</source>
        <translation>无法启动读取模型文件的程序 %1；请重新安装 planviewer</translation>
    </message>
    <message>
        <source>the model file %1 cannot be read: the importer failed at it; export the model again, as glTF 2.0 or OBJ</source>
        <translation>无法读取模型文件 %1：导入程序出错；请以 glTF 2.0 或 OBJ 重新导出模型</translation>
    </message>
    <message>
        <source>the file %1 holds no building model that can be read; export the model again, as glTF 2.0 or OBJ</source>
        <translation>文件 %1 中没有可读取的建筑模型；请以 glTF 2.0 或 OBJ 重新导出模型</translation>
    </message>
    <message>
        <source>the model file %1 holds no triangles; export the model with its geometry</source>
        <translation>模型文件 %1 中没有三角形；请连同几何一起导出模型</translation>
    </message>
    <message>
        <source>the model file %1 cannot be read without OpenGL 3.2; use a desktop with a graphics driver or set LIBGL_ALWAYS_SOFTWARE=1</source>
        <translation>没有 OpenGL 3.2 无法读取模型文件 %1；请使用带显卡驱动的桌面，或设置 LIBGL_ALWAYS_SOFTWARE=1</translation>
    </message>
    <message>
        <source>reading the model file %1 broke off; try again with fewer programs running</source>
        <translation>读取模型文件 %1 中断；请关闭一些程序后重试</translation>
    </message>
</context>
<context>
    <name>PictureMaker</name>
    <message>
        <source>Planned</source>
        <translation>计划</translation>
    </message>
    <message>
        <source>Actual</source>
        <translation>实际</translation>
    </message>
</context>
<context>
    <name>PlanActions</name>
    <message>
        <source>&amp;New plan…</source>
        <translation>新建计划(&amp;N)…</translation>
    </message>
    <message>
        <source>&amp;Rename plan…</source>
        <translation>重命名计划(&amp;R)…</translation>
    </message>
    <message>
        <source>&amp;Copy plan</source>
        <translation>复制计划(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;Delete plan…</source>
        <translation>删除计划(&amp;D)…</translation>
    </message>
    <message>
        <source>&amp;Import plan…</source>
        <translation>导入计划(&amp;I)…</translation>
    </message>
    <message>
        <source>E&amp;xport plan…</source>
        <translation>导出计划(&amp;X)…</translation>
    </message>
    <message>
        <source>Select a plan first.</source>
        <translation>请先选择一个计划。</translation>
    </message>
    <message>
        <source>You may not create plans here.</source>
        <translation>您无权在此创建计划。</translation>
    </message>
    <message>
        <source>You may not edit plans here.</source>
        <translation>您无权在此编辑计划。</translation>
    </message>
    <message>
        <source>You may not delete plans here.</source>
        <translation>您无权在此删除计划。</translation>
    </message>
    <message>
        <source>You may not export plans here.</source>
        <translation>您无权在此导出计划。</translation>
    </message>
    <message>
        <source>&amp;Name</source>
        <translation>名称(&amp;N)</translation>
    </message>
    <message>
        <source>C&amp;ategory</source>
        <translation>类别(&amp;A)</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>确定(&amp;O)</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>取消(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>关闭(&amp;C)</translation>
    </message>
    <message>
        <source>New plan</source>
        <translation>新建计划</translation>
    </message>
    <message>
        <source>Rename plan</source>
        <translation>重命名计划</translation>
    </message>
    <message>
        <source>The copy is &quot;%1&quot;.</source>
        <translation>副本为“%1”。</translation>
    </message>
    <message>
        <source>Delete plan</source>
        <translation>删除计划</translation>
    </message>
    <message>
        <source>Delete the plan &quot;%1&quot; with all its tasks?</source>
        <translation>删除计划“%1”及其所有任务？</translation>
    </message>
    <message>
        <source>This cannot be undone.</source>
        <translation>此操作无法撤销。</translation>
    </message>
    <message>
        <source>&amp;Delete</source>
        <translation>删除(&amp;D)</translation>
    </message>
    <message>
        <source>&amp;Keep</source>
        <translation>保留(&amp;K)</translation>
    </message>
    <message>
        <source>Import a schedule</source>
        <translation>导入进度计划</translation>
    </message>
    <message>
        <source>Exchange JSON (*.json);;All files (*)</source>
        <translation>交换 JSON (*.json);;所有文件 (*)</translation>
    </message>
    <message>
        <source>Import plan</source>
        <translation>导入计划</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be read.</source>
        <translation>无法读取“%1”。</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not in order, so nothing was sent.</source>
        <translation>“%1”有问题，未发送任何内容。</translation>
    </message>
    <message>
        <source>Export the plan</source>
        <translation>导出计划</translation>
    </message>
    <message>
        <source>Exchange JSON (*.json)</source>
        <translation>交换 JSON (*.json)</translation>
    </message>
    <message>
        <source>Export plan</source>
        <translation>导出计划</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be written.</source>
        <translation>无法写入“%1”。</translation>
    </message>
    <message>
        <source>Written: %1</source>
        <translation>已写入：%1</translation>
    </message>
</context>
<context>
    <name>PlanClient</name>
    <message>
        <source>read the list of plans</source>
        <translation>读取计划列表</translation>
    </message>
    <message>
        <source>read the plan</source>
        <translation>读取计划</translation>
    </message>
    <message>
        <source>create the plan &quot;%1&quot;</source>
        <translation>创建计划“%1”</translation>
    </message>
    <message>
        <source>rename the plan to &quot;%1&quot;</source>
        <translation>将计划重命名为“%1”</translation>
    </message>
    <message>
        <source>copy the plan</source>
        <translation>复制计划</translation>
    </message>
    <message>
        <source>delete the plan &quot;%1&quot;</source>
        <translation>删除计划“%1”</translation>
    </message>
    <message>
        <source>read the tasks</source>
        <translation>读取任务</translation>
    </message>
    <message>
        <source>save the tasks</source>
        <translation>保存任务</translation>
    </message>
    <message>
        <source>read the reports of the task</source>
        <translation>读取任务反馈</translation>
    </message>
    <message>
        <source>report progress</source>
        <translation>反馈进度</translation>
    </message>
    <message>
        <source>count the tasks</source>
        <translation>统计任务</translation>
    </message>
    <message>
        <source>count the finished tasks</source>
        <translation>统计已完成的任务</translation>
    </message>
    <message>
        <source>ask for your rights</source>
        <translation>查询您的权限</translation>
    </message>
    <message>
        <source>read which columns are hidden</source>
        <translation>读取隐藏的列</translation>
    </message>
    <message>
        <source>keep which columns are hidden</source>
        <translation>保存隐藏的列</translation>
    </message>
</context>
<context>
    <name>PlanFailure</name>
    <message>
        <source>The service asks for an access token (KV_ACCESS_TOKEN).</source>
        <translation>服务要求访问令牌（KV_ACCESS_TOKEN）。</translation>
    </message>
    <message>
        <source>You do not have the right to do this.</source>
        <translation>您没有执行此操作的权限。</translation>
    </message>
    <message>
        <source>It is no longer there.</source>
        <translation>它已不存在。</translation>
    </message>
    <message>
        <source>The service is busy. Try again in a moment.</source>
        <translation>服务正忙，请稍后再试。</translation>
    </message>
    <message>
        <source>The service failed (%1). Whoever runs it finds the reason in its log.</source>
        <translation>服务出错（%1）。服务的管理员可以在日志中找到原因。</translation>
    </message>
    <message>
        <source>The service refused it (%1).</source>
        <translation>服务拒绝了请求（%1）。</translation>
    </message>
    <message>
        <source>The service did not answer in time.</source>
        <translation>服务未及时响应。</translation>
    </message>
    <message>
        <source>The service cannot be reached. Is its address (KV_BASE_API) right?</source>
        <translation>无法连接服务。其地址（KV_BASE_API）是否正确？</translation>
    </message>
    <message>
        <source>No secure connection could be made.</source>
        <translation>无法建立安全连接。</translation>
    </message>
    <message>
        <source>The answer is not that of a schedule service.</source>
        <translation>响应并非来自进度服务。</translation>
    </message>
    <message>
        <source>The connection was lost.</source>
        <translation>连接已断开。</translation>
    </message>
    <message>
        <source>Not done: %1</source>
        <translation>未完成：%1</translation>
    </message>
    <message>
        <source>No request could be sent.</source>
        <translation>无法发送请求。</translation>
    </message>
    <message>
        <source>The service may have made the change all the same; read again before you repeat it.</source>
        <translation>服务可能已经做了修改；重试前请重新读取。</translation>
    </message>
</context>
<context>
    <name>PlanListModel</name>
    <message>
        <source>(no name)</source>
        <translation>（无名称）</translation>
    </message>
    <message>
        <source>Plan</source>
        <translation>计划</translation>
    </message>
    <message>
        <source>Category</source>
        <translation>类别</translation>
    </message>
    <message>
        <source>Changed</source>
        <translation>修改时间</translation>
    </message>
    <message>
        <source>By</source>
        <translation>修改人</translation>
    </message>
</context>
<context>
    <name>PlanListPanel</name>
    <message>
        <source>Changed &amp;between</source>
        <translation>修改时间范围(&amp;B)</translation>
    </message>
    <message>
        <source>Plans</source>
        <translation>计划列表</translation>
    </message>
    <message>
        <source>any</source>
        <translation>任意</translation>
    </message>
    <message>
        <source>First day</source>
        <translation>起始日</translation>
    </message>
    <message>
        <source>Last day</source>
        <translation>截止日</translation>
    </message>
    <message>
        <source>&amp;Find</source>
        <translation>查找(&amp;F)</translation>
    </message>
    <message>
        <source>&amp;Name</source>
        <translation>名称(&amp;N)</translation>
    </message>
    <message>
        <source>C&amp;ategory</source>
        <translation>类别(&amp;A)</translation>
    </message>
    <message>
        <source>Plans: %1</source>
        <translation>计划数：%1</translation>
    </message>
</context>
<context>
    <name>PlanPage</name>
    <message>
        <source>Tasks</source>
        <translation>任务</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not in the plan.</source>
        <translation>“%1”不在计划中。</translation>
    </message>
    <message>
        <source>Saved: %1 created, %2 updated.</source>
        <translation>已保存：新建 %1 个，更新 %2 个。</translation>
    </message>
    <message>
        <source>The service keeps them as they were sent.</source>
        <translation>服务按发送的内容保存。</translation>
    </message>
    <message>
        <source>Kept otherwise</source>
        <translation>保存结果不同</translation>
    </message>
    <message>
        <source>The service keeps some tasks otherwise than they were sent.</source>
        <translation>服务保存的部分任务与发送的内容不同。</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>关闭(&amp;C)</translation>
    </message>
    <message>
        <source>New task</source>
        <translation>新任务</translation>
    </message>
    <message>
        <source>Reported on &quot;%1&quot;.</source>
        <translation>已反馈“%1”。</translation>
    </message>
    <message>
        <source>Saved, but what the service keeps could not be read. Save again to read it.</source>
        <translation>已保存，但未能读回服务保存的内容。再次保存即可读取。</translation>
    </message>
</context>
<context>
    <name>PlaybackBar</name>
    <message>
        <source>To the start</source>
        <translation>到开头</translation>
    </message>
    <message>
        <source>Go to the start of the period</source>
        <translation>转到时段开头</translation>
    </message>
    <message>
        <source>A day back</source>
        <translation>后退一天</translation>
    </message>
    <message>
        <source>Go a day back</source>
        <translation>后退一天</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>播放</translation>
    </message>
    <message>
        <source>A day forward</source>
        <translation>前进一天</translation>
    </message>
    <message>
        <source>Go a day forward</source>
        <translation>前进一天</translation>
    </message>
    <message>
        <source>To the end</source>
        <translation>到结尾</translation>
    </message>
    <message>
        <source>Go to the end of the period</source>
        <translation>转到时段结尾</translation>
    </message>
    <message>
        <source>Repeat</source>
        <translation>循环</translation>
    </message>
    <message>
        <source>Begin anew at the end</source>
        <translation>到结尾后从头开始</translation>
    </message>
    <message>
        <source>Date of the simulation</source>
        <translation>模拟日期</translation>
    </message>
    <message>
        <source>Date that is shown</source>
        <translation>当前显示的日期</translation>
    </message>
    <message>
        <source>Speed, in days of the schedule per second</source>
        <translation>速度，每秒的计划天数</translation>
    </message>
    <message>
        <source>Days of the schedule per second</source>
        <translation>每秒的计划天数</translation>
    </message>
    <message>
        <source> days/s</source>
        <translation> 天/秒</translation>
    </message>
    <message>
        <source>No dates to play</source>
        <translation>没有可播放的日期</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>暂停</translation>
    </message>
    <message>
        <source>Pause (space bar)</source>
        <translation>暂停（空格键）</translation>
    </message>
    <message>
        <source>Play (space bar)</source>
        <translation>播放（空格键）</translation>
    </message>
</context>
<context>
    <name>ProblemKind</name>
    <message>
        <source>… and %1 more of this kind</source>
        <translation>……以及另外 %1 个同类问题</translation>
    </message>
</context>
<context>
    <name>ReportDialog</name>
    <message>
        <source>Report progress</source>
        <translation>反馈进度</translation>
    </message>
    <message>
        <source>&amp;Done</source>
        <translation>完成(&amp;D)</translation>
    </message>
    <message>
        <source>Actual &amp;start</source>
        <translation>实际开始(&amp;S)</translation>
    </message>
    <message>
        <source>Actual &amp;finish</source>
        <translation>实际完成(&amp;F)</translation>
    </message>
    <message>
        <source>&amp;Remark</source>
        <translation>备注(&amp;R)</translation>
    </message>
    <message>
        <source>&amp;Report</source>
        <translation>反馈(&amp;R)</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>取消(&amp;C)</translation>
    </message>
    <message>
        <source>Write dates as 2026-03-05, or leave them empty.</source>
        <translation>日期请写作 2026-03-05，或留空。</translation>
    </message>
</context>
<context>
    <name>SaveDialog</name>
    <message>
        <source>Save the plan</source>
        <translation>保存计划</translation>
    </message>
    <message>
        <source>What will be saved</source>
        <translation>将要保存的内容</translation>
    </message>
    <message>
        <source>Task</source>
        <translation>任务</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>修改</translation>
    </message>
    <message>
        <source>To be created: %1</source>
        <translation>将新建：%1</translation>
    </message>
    <message>
        <source>To be updated: %1</source>
        <translation>将更新：%1</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>保存(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>取消(&amp;C)</translation>
    </message>
    <message>
        <source>The service will be asked for these changes:</source>
        <translation>将请求服务做以下修改：</translation>
    </message>
</context>
<context>
    <name>SimulationGapsModel</name>
    <message>
        <source>Elements without geometry: %1</source>
        <translation>没有几何模型的构件：%1</translation>
    </message>
    <message>
        <source>Tasks without elements: %1</source>
        <translation>没有关联构件的任务：%1</translation>
    </message>
    <message>
        <source>Geometry without tasks: %1</source>
        <translation>没有任务的几何模型：%1</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <source>Rows</source>
        <translation>行</translation>
    </message>
</context>
<context>
    <name>SimulationGapsPanel</name>
    <message>
        <source>What the simulation cannot show</source>
        <translation>模拟无法显示的内容</translation>
    </message>
    <message>
        <source>Every task has elements, and every element its geometry.</source>
        <translation>每个任务都有构件，每个构件都有几何模型。</translation>
    </message>
    <message>
        <source>Some of the plan cannot be seen in the model.</source>
        <translation>计划中有一部分在模型中看不到。</translation>
    </message>
</context>
<context>
    <name>SimulationPage</name>
    <message>
        <source>Settings</source>
        <translation>设置</translation>
    </message>
    <message>
        <source>Floors</source>
        <translation>楼层</translation>
    </message>
    <message>
        <source>Gaps</source>
        <translation>缺失</translation>
    </message>
    <message>
        <source>Reading the model was canceled.</source>
        <translation>已取消读取模型。</translation>
    </message>
    <message>
        <source>Open a plan first.</source>
        <translation>请先打开一个计划。</translation>
    </message>
    <message>
        <source>Choose the file with the model of the building: Simulation, Open a model…</source>
        <translation>请选择建筑模型文件：“模拟”菜单，“打开模型…”</translation>
    </message>
    <message>
        <source>Reading the model %1 …</source>
        <translation>正在读取模型 %1 …</translation>
    </message>
    <message>
        <source>no task names an element of this model; is it the model of another building?</source>
        <translation>没有任务关联此模型的构件；这是另一栋建筑的模型吗？</translation>
    </message>
    <message>
        <source>Model read: %1 elements, %2 of them named by tasks.</source>
        <translation>模型已读取：%1 个构件，其中 %2 个被任务关联。</translation>
    </message>
</context>
<context>
    <name>SimulationStage</name>
    <message>
        <source>&amp;Cancel</source>
        <translation>取消(&amp;C)</translation>
    </message>
    <message>
        <source>Planned</source>
        <translation>计划</translation>
    </message>
    <message>
        <source>Actual</source>
        <translation>实际</translation>
    </message>
    <message>
        <source>Reading the model</source>
        <translation>正在读取模型</translation>
    </message>
</context>
<context>
    <name>StateLegend</name>
    <message>
        <source>Paint elements in this state</source>
        <translation>为处于此状态的构件着色</translation>
    </message>
    <message>
        <source>Change the colour</source>
        <translation>更改颜色</translation>
    </message>
    <message>
        <source>Colour of: %1</source>
        <translation>颜色：%1</translation>
    </message>
    <message>
        <source>Defau&amp;lt colours</source>
        <translation>默认颜色(&amp;L)</translation>
    </message>
</context>
<context>
    <name>StatisticsPage</name>
    <message>
        <source>Not started</source>
        <translation>未开始</translation>
    </message>
    <message>
        <source>In progress</source>
        <translation>执行中</translation>
    </message>
    <message>
        <source>Finished</source>
        <translation>已完成</translation>
    </message>
    <message>
        <source>On time</source>
        <translation>正常</translation>
    </message>
    <message>
        <source>Delayed</source>
        <translation>延期</translation>
    </message>
    <message>
        <source>Ahead</source>
        <translation>提前</translation>
    </message>
    <message>
        <source>Tasks by status and situation</source>
        <translation>按状态与情况统计任务</translation>
    </message>
    <message>
        <source>Finished tasks over time</source>
        <translation>按时间统计完成的任务</translation>
    </message>
    <message>
        <source>any category</source>
        <translation>任意类别</translation>
    </message>
    <message>
        <source>Category</source>
        <translation>类别</translation>
    </message>
    <message>
        <source>Period</source>
        <translation>周期</translation>
    </message>
    <message>
        <source>by day</source>
        <translation>按日</translation>
    </message>
    <message>
        <source>by week</source>
        <translation>按周</translation>
    </message>
    <message>
        <source>by month</source>
        <translation>按月</translation>
    </message>
    <message>
        <source>by year</source>
        <translation>按年</translation>
    </message>
    <message>
        <source>&amp;Count</source>
        <translation>统计(&amp;C)</translation>
    </message>
    <message>
        <source>Your tasks</source>
        <translation>您的任务</translation>
    </message>
    <message>
        <source>Tasks in all: %1</source>
        <translation>任务总数：%1</translation>
    </message>
</context>
<context>
    <name>TaskColumn</name>
    <message>
        <source>Task</source>
        <translation>任务</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>开始</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>完成</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>进度</translation>
    </message>
    <message>
        <source>Actual start</source>
        <translation>实际开始</translation>
    </message>
    <message>
        <source>Actual finish</source>
        <translation>实际完成</translation>
    </message>
    <message>
        <source>State</source>
        <translation>状态</translation>
    </message>
    <message>
        <source>Predecessors</source>
        <translation>前置任务</translation>
    </message>
    <message>
        <source>Responsible</source>
        <translation>负责人</translation>
    </message>
    <message>
        <source>Planned work</source>
        <translation>计划工程量</translation>
    </message>
    <message>
        <source>Actual work</source>
        <translation>实际工程量</translation>
    </message>
</context>
<context>
    <name>TaskCommands</name>
    <message>
        <source>change of %1 of &quot;%2&quot;</source>
        <translation>修改“%2”的%1</translation>
    </message>
    <message>
        <source>new task &quot;%1&quot;</source>
        <translation>新任务“%1”</translation>
    </message>
</context>
<context>
    <name>TaskEdit</name>
    <message>
        <source>&quot;%1&quot; is no date; write it as 2026-03-05.</source>
        <translation>“%1”不是日期；请写作 2026-03-05。</translation>
    </message>
    <message>
        <source>The task would finish before it starts.</source>
        <translation>任务的完成时间将早于开始时间。</translation>
    </message>
    <message>
        <source>The task would have finished before it started.</source>
        <translation>任务的实际完成时间将早于实际开始时间。</translation>
    </message>
    <message>
        <source>A task needs a name.</source>
        <translation>任务需要名称。</translation>
    </message>
    <message>
        <source>Progress is a number from 0 to 100.</source>
        <translation>进度是 0 到 100 的数字。</translation>
    </message>
</context>
<context>
    <name>TaskModel</name>
    <message>
        <source>A summary task follows its subtasks.</source>
        <translation>摘要任务由其子任务决定。</translation>
    </message>
    <message>
        <source>what was not saved</source>
        <translation>未保存的内容</translation>
    </message>
</context>
<context>
    <name>TaskText</name>
    <message>
        <source>Planned:</source>
        <translation>计划：</translation>
    </message>
    <message>
        <source>Actual:</source>
        <translation>实际：</translation>
    </message>
</context>
<context>
    <name>TimeLineSetPanel</name>
    <message>
        <source> days/s</source>
        <translation> 天/秒</translation>
    </message>
    <message>
        <source>Days of the schedule per second</source>
        <translation>每秒的计划天数</translation>
    </message>
    <message>
        <source>Plays from the first to the last date of the plan&apos;s tasks</source>
        <translation>从计划任务的最早日期播放到最晚日期</translation>
    </message>
    <message>
        <source>When off, late tasks look as those in time</source>
        <translation>关闭时，延期任务与按期任务外观相同</translation>
    </message>
    <message>
        <source>When off, elements have the colours of their materials</source>
        <translation>关闭时，构件显示其材质颜色</translation>
    </message>
    <message>
        <source>&amp;To</source>
        <translation>到(&amp;T)</translation>
    </message>
    <message>
        <source>Which dates the building follows</source>
        <translation>建筑按哪种日期生长</translation>
    </message>
    <message>
        <source>Planned and actual</source>
        <translation>计划与实际</translation>
    </message>
    <message>
        <source>Planned</source>
        <translation>计划</translation>
    </message>
    <message>
        <source>Actual</source>
        <translation>实际</translation>
    </message>
    <message>
        <source>What tasks that are not finished have built, by their actual dates</source>
        <translation>未完成任务按实际日期已建成的部分</translation>
    </message>
    <message>
        <source>As reported</source>
        <translation>按上报进度</translation>
    </message>
    <message>
        <source>As time goes</source>
        <translation>按时间推移</translation>
    </message>
    <message>
        <source>&amp;Unfinished</source>
        <translation>未完成(&amp;U)</translation>
    </message>
    <message>
        <source>Dates &amp;of the plan</source>
        <translation>使用计划日期(&amp;O)</translation>
    </message>
    <message>
        <source>Show dela&amp;ys</source>
        <translation>显示延期(&amp;Y)</translation>
    </message>
    <message>
        <source>Pa&amp;int by state</source>
        <translation>按状态着色(&amp;I)</translation>
    </message>
    <message>
        <source>&amp;Dates</source>
        <translation>日期(&amp;D)</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>速度</translation>
    </message>
    <message>
        <source>F&amp;rom</source>
        <translation>从(&amp;R)</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Not done</source>
        <translation>未完成</translation>
    </message>
    <message>
        <source>&amp;Try again</source>
        <translation>重试(&amp;T)</translation>
    </message>
    <message>
        <source>&amp;Leave it</source>
        <translation>放弃(&amp;L)</translation>
    </message>
</context>
</TS>
